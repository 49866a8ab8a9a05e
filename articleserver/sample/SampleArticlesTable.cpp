#include "articleserver/sample/SampleContent.h"

namespace ostrel {

std::vector<SampleArticle> sampleArticlesOfTable() {
    using enum SampleAuthor;
    using enum SampleScene;
    return {
        {
            .author = Imani,
            .title = "Soup for a Tuesday",
            .text = "Tuesdays ask for little. Two onions, cut small and given all the time they want in "
                    "butter. Three carrots. A handful of red lentils, washed until the water runs clear. "
                    "Water, salt, a bay leaf if there is one.\n"
                    "\n"
                    "When the lentils have fallen apart it is done, but it does not know it yet. It needs "
                    "the juice of half a lemon. Before the lemon it is porridge; after it, soup.",
            .age = 35,
            .likes = 18,
            .comments =
                {
                    {Ada, "Made it. Forgot the lemon. Went out and bought a lemon. You are right about the "
                          "lemon."},
                },
        },
        {
            .author = Oskar,
            .title = "Noodles at the end of the line",
            .text = "If you stay on the train when everybody else has left, you come to a platform with a "
                    "single lamp and, under it, a door with a curtain. Behind the curtain there are nine "
                    "stools.\n"
                    "\n"
                    "The menu has one line. You sit, and a bowl comes. The broth is the colour of a "
                    "violin; the noodles are pulled while you watch, doubled and doubled again until one "
                    "rope has become two hundred and fifty-six threads, and then they are gone into the "
                    "pot for as long as it takes to say so. Half an egg, spring onions, a drop of "
                    "something dark that nobody will name.\n"
                    "\n"
                    "The man beside me ate in silence, put down his chopsticks, bowed to the bowl, and "
                    "left to catch the last train. I missed mine. It did not matter; at the end of the "
                    "line all trains go the right way.",
            .age = 410,
            .likes = 63,
            .images =
                {
                    {Bowl, 1200, 1200, "Number four. There is no number one to three."},
                    {Bowl, 1200, 800, "The second bowl, an hour later. I regret nothing."},
                },
            .comments =
                {
                    {Lin, "看饿了!"},
                    {Wen, "面要现拉的才好吃,汤也一定要熬够时间。"},
                    {Marek, "The egg alone is worth the fare."},
                },
        },
        {
            .author = Ada,
            .title = "In praise of the second-best knife",
            .text = "The best knife lives in a wooden block, is sharpened on Sundays and must not be lent. "
                    "The second-best knife does the work.\n"
                    "\n"
                    "It has opened parcels. It has been to three picnics and came home from all of them. "
                    "Its handle was once in the dishwasher and has never quite forgiven it. It is not "
                    "sharp enough to be dangerous nor blunt enough to be useless, it knows every onion by "
                    "name, and when guests offer to help it is the one I hand them, blade down, with "
                    "complete confidence in both.",
            .age = 3015,
            .likes = 40,
            .comments =
                {
                    {Tove, "Mine has a burn mark from 1998 and outranks every other thing in the drawer."},
                },
        },
        {
            .author = Yara,
            .title = "Bread, first attempt to ninth",
            .text = "One. A brick, structurally sound.\n"
                    "Two. A brick with a crust.\n"
                    "Three. I learned that yeast is alive, and that I had been scalding it.\n"
                    "Four. Rose beautifully. Fell beautifully.\n"
                    "Five. I stopped kneading after ten minutes because the recipe said so, and kept on "
                    "after twenty because my neighbour, who was passing, said so. My neighbour was right.\n"
                    "Six. Left it in the airing cupboard and forgot it. It did not forget me. We opened "
                    "the door together, my neighbour and I, and looked at it for some time.\n"
                    "Seven. Shaped it too tight; it burst along one side, like a laugh.\n"
                    "Eight. Nearly.\n"
                    "Nine. The crust sang when I took it out. I had read that it does that: a fine crackle "
                    "as it cools, like frost underfoot. I turned off the radio and the two of us stood in "
                    "the kitchen and listened to a loaf.",
            .age = 10120,
            .likes = 88,
            .images =
                {
                    {Teapot, 1200, 800, "What one does while it rises."},
                },
            .comments =
                {
                    {Imani, "Number six made me laugh out loud on a bus."},
                    {Oskar, "Number nine, please, with salt butter, at my house."},
                    {Ada, "The log reads like a ship's. \"Day four: the crew is restless.\""},
                },
        },
        {
            .author = Marek,
            .title = "Pears wait for nobody",
            .text = "There is an hour in the life of a pear. Before it, you might as well bite the table. "
                    "After it, you need a spoon and some charity. I have missed it on account of telephone "
                    "calls, a haircut, and once a very good book.\n"
                    "\n"
                    "This year I bought six at different stages, put them in a row on the sill, and gave "
                    "each a name. It helped. You do not forget somebody with a name.\n"
                    "\n"
                    "Beatrice's hour came on Saturday at four. I was there.",
            .age = 17300,
            .likes = 25,
            .images =
                {
                    {Pears, 1200, 800, "On Thursday they were stones."},
                    {Pears, 900, 1200, "On Saturday, at four in the afternoon, they were perfect.", 5},
                },
        },
        {
            .author = Tove,
            .title = "What my grandmother wrote beside the recipes",
            .text = "I have inherited her cookery book. The recipes are printed and can be had anywhere. "
                    "The margins cannot.\n"
                    "\n"
                    "Beside the apple cake: \"Not when Else comes.\" Beside the fish pie: \"Takes longer "
                    "than he says. Everything takes longer than he says.\" Beside a walnut torte, in a "
                    "steadier hand, with a date in June: \"Good. But he did not deserve it.\"\n"
                    "\n"
                    "There is a page for jam with so many drops on it that it has gone transparent, and "
                    "you can read the recipe for pickled herring through it. Under the herring she has "
                    "written only: \"Oh, no.\"\n"
                    "\n"
                    "And on the inside of the back cover, in pencil, small, a list of who likes what. My "
                    "father: crusts. My aunt: the corner piece, but will not ask. My grandfather: "
                    "everything, \"or says so\". I am at the very end, in ballpoint, because I came late: "
                    "\"The little one likes to stir.\"",
            .age = 33500,
            .likes = 112,
            .comments =
                {
                    {Ada, "\"Good. But he did not deserve it.\" I am going to think about this all day."},
                    {Yara, "Mine only ever wrote \"more\"."},
                    {Wen, "字里行间都是生活。"},
                },
        },
        {
            .author = Imani,
            .title = "Eleven ways with a tired tomato",
            .text = "Slice it, salt it, and leave it alone for an hour. Most of the other ten are "
                    "improvements on that which you will not need.",
            .age = 61000,
            .likes = 19,
            .openComment = false,
        },
        {
            .author = Oskar,
            .title = "Coffee on a very small stove",
            .text = "The stove weighs as much as a letter. The pot holds one cup. Between the two of them "
                    "they take eleven minutes, if there is no wind, and I have stopped wishing that it "
                    "were less.\n"
                    "\n"
                    "In eleven minutes the light comes down the opposite slope as far as the first sheep. "
                    "The stream, which one cannot hear while walking, starts to talk. A bird with one idea "
                    "tells it to me.\n"
                    "\n"
                    "Then the lid begins to rattle, and I am almost sorry.",
            .age = 98000,
            .likes = 31,
            .images =
                {
                    {Ridges, 1500, 900, "Where the kettle stood, looking the other way."},
                },
        },
    };
}

}  // namespace ostrel
