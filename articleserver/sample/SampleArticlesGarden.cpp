#include "articleserver/sample/SampleContent.h"

namespace ostrel {

std::vector<SampleArticle> sampleArticlesOfGarden() {
    using enum SampleAuthor;
    using enum SampleScene;
    return {
        {
            .author = Tove,
            .title = "The first snowdrop is not where I planted it",
            .text = "Last autumn I put forty bulbs under the pear tree, in a drift, as the books advise. "
                    "This morning the first snowdrop of the year came up in the gravel beside the bins.\n"
                    "\n"
                    "I have moved the bins.",
            .age = 55,
            .likes = 27,
            .comments =
                {
                    {Imani, "They walk at night. Everybody knows."},
                },
        },
        {
            .author = Ada,
            .title = "A year with one square metre",
            .text = "In January I laid a frame of four laths on the grass behind the house, one metre by "
                    "one, and promised to do nothing to what was inside it for a year. No mowing, no "
                    "weeding, no kindness. Only looking: ten minutes each morning with a cup of tea.\n"
                    "\n"
                    "January was short. Grass, moss, a leaf that had come from somewhere else. I drew the "
                    "leaf.\n"
                    "\n"
                    "In February there were holes, each the size of a pencil, and small towers of earth "
                    "beside them. I learned that there are more than twenty worms under such a piece of "
                    "ground and that in a year they will have carried a bucket of it through themselves. I "
                    "have walked more softly since.\n"
                    "\n"
                    "March brought a celandine, exactly in the middle, as if somebody had measured. It "
                    "opened at ten, shut at four, and on dark days did not trouble to open at all. A queen "
                    "bumblebee came along low over the grass like a slow lorry, inspected a hole, and "
                    "backed out again.\n"
                    "\n"
                    "April: I began to need names. I bought a book. There is nothing like a name for "
                    "making a thing visible; the green, which had been one green, came apart into "
                    "speedwell, clover, yarrow, sorrel, three grasses and a fourth that I could not find "
                    "in the book at all and which turned out to be a sedge.\n"
                    "\n"
                    "In May it was up to my knee. The neighbour leaned over the fence and asked, kindly, "
                    "whether the mower was broken. I showed him the frame. He looked for a while, went "
                    "away, and came back with a folding chair. We sat, he with his coffee, I with my tea, "
                    "and at a quarter past eight a spider the colour of straw let herself down on a thread "
                    "and rode away on the wind without so much as looking back.\n"
                    "\n"
                    "June had ants and July had everything. On the eleventh I counted thirty kinds of "
                    "plant and gave up counting the others, which would not keep still. There was a moth "
                    "who looked like bark, a beetle who looked like a drop of oil, and a fly who looked "
                    "like a wasp and knew it. A frog stayed for the whole of one wet week. I had never had "
                    "a frog.\n"
                    "\n"
                    "In August it turned to straw and I thought that it was over, which shows how little I "
                    "had understood. The seeds were leaving. Some had parachutes and some had hooks; the "
                    "sorrel simply let go. A goldfinch came for the thistle, the one thistle, and pulled "
                    "it to pieces like somebody unpacking glasses.\n"
                    "\n"
                    "September, and dew: every web in the square was suddenly visible, and there were "
                    "eleven. I had been looking at it each day for nine months, and had seen two.\n"
                    "\n"
                    "In October, mushrooms, in a curve that left the frame at one side and, I found when I "
                    "followed it, came back in at the other, having gone all the way round the pear tree.\n"
                    "\n"
                    "In November it rained. I will not pretend that I went out every morning. But when I "
                    "did there was a robin on the frame, on the same corner each time, so that the lath is "
                    "quite pale there now.\n"
                    "\n"
                    "Today is the last of December and I have taken the frame away, because a promise is a "
                    "promise. It has left a square of its own: you can see the line where the laths lay, "
                    "four thin paths of yellow grass with nothing remarkable about them at all. I stepped "
                    "over it on the way in. I expect that I always will.",
            .age = 5760,
            .likes = 134,
            .images =
                {
                    {Meadow, 900, 1200, "July. I had stopped counting at thirty kinds."},
                    {Meadow, 320, 240, "The neighbouring metre, for comparison."},
                },
            .comments =
                {
                    {Tove, "This should be read in schools."},
                    {Marek, "You left out what the blackbird thought of the frame."},
                    {Imani, "I have marked out mine with four chopsticks."},
                    {Lin, "一平方米的四季,写得真细腻。"},
                },
        },
        {
            .author = Marek,
            .title = "My neighbour's hose",
            .text = "My neighbour and I share a hose. There is no agreement; the tap is on his side, the "
                    "roses are on mine, and one summer in the distant past somebody made a hole in the "
                    "hedge.\n"
                    "\n"
                    "He leaves it coiled to the left. I leave it coiled to the right. In eleven years this "
                    "is the only thing we have ever disagreed on, and neither of us has said a word.",
            .age = 14400,
            .likes = 22,
        },
        {
            .author = Yara,
            .title = "Balcony, north-facing",
            .text = "The label said full sun. The balcony said no.\n"
                    "\n"
                    "So I stopped arguing and asked what wants to live here. Ferns do; I have seven, and "
                    "they unroll in May like a row of question marks. Ivy does. Mint does, and would like "
                    "the living room too. There is a begonia that a friend gave me in order to get rid of "
                    "it, with leaves like wet slate, and in the one hour of evening light that we get, "
                    "reflected from the windows across the road, it goes red underneath as though somebody "
                    "had switched it on.\n"
                    "\n"
                    "I have moved the chair so that I face it.",
            .age = 26000,
            .likes = 36,
            .images =
                {
                    {Teapot, 900, 1200, "The only thing up here that likes the shade as much as I do."},
                },
            .comments =
                {
                    {Tove, "Ferns! Ferns, ferns and more ferns."},
                },
        },
        {
            .author = Imani,
            .title = "Seed envelopes",
            .text = "Every spring I find them in coat pockets: small folded squares of newspaper, each "
                    "with something rattling in it and no name.\n"
                    "\n"
                    "I sow them all in the same bed. It is the only letter I ever get from last year.",
            .age = 47000,
            .likes = 15,
        },
        {
            .author = Oskar,
            .title = "How to prune an apple tree, by somebody afraid of it",
            .text = "Read two books that contradict each other.\n"
                    "Walk round the tree once in each direction.\n"
                    "Take out what is dead. (This cannot be wrong.)\n"
                    "Take out what rubs. (This can hardly be wrong.)\n"
                    "Now look for a branch that is growing towards the middle, as if it had forgotten "
                    "something indoors. Cut it. Apologise and step back.\n"
                    "Repeat until you notice that you are enjoying yourself. Stop at once.",
            .age = 72000,
            .likes = 48,
            .comments =
                {
                    {Marek, "\"Apologise and step back\" has improved my pruning more than any book."},
                    {Ada, "The tree looks very well, I passed it on Sunday."},
                },
        },
        {
            .author = Tove,
            .title = "The compost is warm",
            .text = "I put my hand in this morning, to the wrist. Frost on the lid, and in the middle of "
                    "it summer: a heap of peelings quietly running a fever.\n"
                    "\n"
                    "Some evenings I go out only to check.",
            .age = 110000,
            .likes = 20,
        },
    };
}

}  // namespace ostrel
