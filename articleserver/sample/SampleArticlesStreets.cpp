#include "articleserver/sample/SampleContent.h"

namespace ostrel {

std::vector<SampleArticle> sampleArticlesOfStreets() {
    using enum SampleAuthor;
    using enum SampleScene;
    return {
        {
            .author = Ada,
            .title = "The street that keeps its own time",
            .text = "There is a street behind the old cannery where no two clocks agree. The baker's is "
                    "four minutes fast, because he likes to be ahead of his bread. The pharmacy is six "
                    "minutes slow, because the pharmacist dislikes turning people away. The one over the "
                    "school stopped at a quarter past noon some winters ago, and since then it has always "
                    "been nearly time to eat.\n"
                    "\n"
                    "I asked the woman who mends shoes at the corner which one she goes by. She pointed at "
                    "the plane tree in the middle of the pavement. When its shadow reaches her door she "
                    "makes tea; when it reaches the kerb on the other side she goes home. In winter, she "
                    "said, she works shorter days, and nobody has complained yet.\n"
                    "\n"
                    "I have begun to set my walks by it. It is surprising how little one is late for.",
            .age = 12,
            .likes = 34,
            .images =
                {
                    {Street, 1200, 800,
                     "Seven in the evening, or a quarter past noon, depending on which clock you ask."},
                },
            .videos =
                {
                    {SampleClip::Lantern, "The lamp at the shoe mender's, keeping time."},
                },
            .comments =
                {
                    {Marek, "I have walked down it a hundred times and never looked up. Tomorrow I will."},
                    {Imani, "Please never let anyone repair them."},
                },
        },
        {
            .author = Oskar,
            .title = "Across the city by its smallest doors",
            .text = "My rule for the afternoon was simple: at every corner, turn towards the smallest door "
                    "in sight.\n"
                    "\n"
                    "It took me past a hatch where a hand sells two kinds of cheese and asks no questions, "
                    "through a passage so narrow that I had to take my rucksack off, and into a courtyard "
                    "where somebody had painted hopscotch squares all the way up to twenty-three. I met a "
                    "cat who owned a bench. I met a man carrying a mirror, and for a moment there were two "
                    "streets.\n"
                    "\n"
                    "The last door, at the end of a lane that my map does not have, was locked. On it hung "
                    "a card: \"Back soon.\" The card was yellow with age. I waited a little, out of "
                    "politeness.",
            .age = 1490,
            .likes = 21,
            .images =
                {
                    {Street, 900, 1200, "The green one is barely wider than a broom.", 6},
                },
            .comments =
                {
                    {Ada, "The one by the tannery has a letter slot at ankle height. For very short "
                          "letters?"},
                },
        },
        {
            .author = Marek,
            .title = "Night tram, last round",
            .text = "The last tram of the night makes its round with the lights turned down, and the "
                    "people on it are of three kinds: those going home, those going to work, and those who "
                    "simply like to ride.\n"
                    "\n"
                    "I belong to the third kind. For the price of a ticket you get forty minutes of city, "
                    "unrolled in front of you like a film with the sound off. The fish market hosing down "
                    "its floor. A window with a single lamp and somebody ironing. The bridge, from which "
                    "you see both rows of lights at once, the real ones and the ones in the water, and for "
                    "a second cannot say which is which.\n"
                    "\n"
                    "At the terminus the driver walks the length of the tram, turning over the backs of "
                    "the seats so that they face the other way. It is the gentlest sound I know: clack, "
                    "clack, clack, thirty-two times, and then we go back.",
            .age = 4330,
            .likes = 57,
            .images =
                {
                    {NightCity, 800, 1200, "From the bridge, just after the rain.", 8},
                    {NightCity, 2400, 480, "The whole waterfront between two stops."},
                },
            .videos =
                {
                    {SampleClip::Rain, "Second stop."},
                    {SampleClip::Lantern, "Last stop."},
                },
            .comments =
                {
                    {Yara, "The driver who waves at the lock keeper! I thought I was the only one who "
                           "noticed."},
                    {Oskar, "I took it yesterday because of this. She waved."},
                    {Ada, "Reading this on the first tram of the morning, which is a different animal."},
                },
        },
        {
            .author = Imani,
            .title = "Rooftop notes",
            .text = "From up here the city is mostly sky with a rim.\n"
                    "\n"
                    "Item: eleven water tanks, three of them with hats.\n"
                    "Item: one vegetable garden in bathtubs, tomatoes doing well.\n"
                    "Item: a boy teaching his grandmother to fly a kite, or the other way round.\n"
                    "Item: the shadow of my own building, which reaches the river at six and then lets "
                    "go.\n"
                    "\n"
                    "I came up to hang out the washing. That was two hours ago.",
            .age = 8750,
            .likes = 16,
        },
        {
            .author = Yara,
            .title = "A map made by ear",
            .text = "For a month I have been drawing the neighbourhood as it sounds. Roads are left out "
                    "unless they make a noise that is theirs. The station is a large soft shape, because "
                    "its announcements drift; the school is a burst, dotted twice a day; the substation "
                    "behind the park is a single straight line in the pitch of a fridge.\n"
                    "\n"
                    "Some things I had never noticed until I had to draw them. There is a bakery fan that "
                    "you can follow for three streets. There is a corner where two sets of church bells "
                    "arrive a heartbeat apart, so that every hour is struck and then remembered. And there "
                    "is a silence, about the size of a tennis court, between the library and the law "
                    "courts, where the wind goes round and the traffic is hidden by a bank of earth. I sat "
                    "there and could hear a man on the third floor turn the page of a newspaper.\n"
                    "\n"
                    "I have coloured it pale blue. People who see the map always point at it first, and "
                    "ask what it is.",
            .age = 21600,
            .likes = 42,
            .comments =
                {
                    {Wen, "这个主意真好,我也要画一张。"},
                    {Tove, "The humming substation is on mine too! E flat, I am fairly sure."},
                    {Marek, "Could you hear the river before the weir was built?"},
                },
        },
        {
            .author = Ada,
            .title = "Bridges, ranked by their railings",
            .text = "1. The iron one at the mill: cold, honest, good for leaning on with both elbows.\n"
                    "2. The stone parapet by the archive: warm until ten at night in summer. Slightly too "
                    "wide for short arms.\n"
                    "3. The new footbridge: glass. One leans on glass the way one speaks to a stranger on "
                    "a train, politely and not for long.\n"
                    "4. The railway bridge: no leaning permitted. Included for its view.\n"
                    "5. The little wooden one in the park: wobbles. Children's favourite, and mine.",
            .age = 40320,
            .likes = 29,
            .openComment = false,
        },
        {
            .author = Tove,
            .title = "Snow in the passage",
            .text = "It began during the last lesson, and by four the passage between the houses was so "
                    "quiet that I could hear my own coat. Somebody had already been through: small boots, "
                    "then a dog, then the small boots again, running.\n"
                    "\n"
                    "Light falls differently when the ground is white. It comes from below, like in a "
                    "theatre, and everybody looks a little surprised. Mr. Halloway from number nine, whom "
                    "I have never seen without a newspaper, was standing in the middle of it with his face "
                    "turned up and his eyes closed.\n"
                    "\n"
                    "I walked round the block a second time so as not to disturb him.",
            .age = 129600,
            .likes = 73,
            .images =
                {
                    {Street, 1400, 900, "The lamps came on at three."},
                },
            .comments =
                {
                    {Imani, "I miss snow that stays."},
                },
        },
    };
}

}  // namespace ostrel
