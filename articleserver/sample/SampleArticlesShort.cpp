#include "articleserver/sample/SampleContent.h"

namespace ostrel {

std::vector<SampleArticle> shortSampleArticles() {
    using enum SampleAuthor;
    using enum SampleScene;
    return {
        {
            .author = Imani,
            .title = "",
            .text = "Just now: a heron on the neighbour's car. Neither of them is moving. 🐦",
            .age = 0,
            .likes = 2,
        },
        {
            .author = Tove,
            .title = "",
            .text = "It floats! 🛶 Eleven weekends, two planks too many, one thumb too few, and it floats.",
            .age = 7,
            .likes = 5,
            .comments =
                {
                    {Ada, "🎉🎉🎉"},
                },
        },
        {
            .author = Ada,
            .title = "Rain, finally",
            .text = "It started while I was writing this sentence.",
            .age = 95,
            .likes = 14,
            .images =
                {
                    {Lake, 1600, 800},
                },
            .videos =
                {
                    {SampleClip::Rain, "The kitchen window, five minutes later."},
                },
        },
        {
            .author = Marek,
            .title = "Found",
            .text = "One glove, grey, left hand, on the railing by the mill. It is waving.",
            .age = 640,
            .likes = 33,
            .openComment = false,
        },
        {
            .author = Oskar,
            .title = "",
            .text = "",
            .age = 2100,
            .likes = 11,
            .images =
                {
                    {SeaDawn, 1600, 600},
                },
        },
        {
            .author = Yara,
            .title = "Words that are longer than their things",
            .text = "My collection so far:\r\n"
                    "\r\n"
                    "butterfly (medium)\r\n"
                    "antidisestablishmentarianism (long, for what it does)\r\n"
                    "Donaudampfschifffahrtselektrizitätenhauptbetriebswerkbauunterbeamtengesellschaftsvorst"
                    "andsmitgliederversammlungsprotokollabschriftbeglaubigungsstempelkissenfarbennachfüllbe"
                    "hälterverschlusskappe (a small cap, about so big)\r\n"
                    "\r\n"
                    "The last one I made longer myself. It is allowed. That is what is wrong with it.",
            .age = 8100,
            .likes = 26,
            .comments =
                {
                    {Marek, "I measured. It is longer than my desk."},
                },
        },
        {
            .author = Yara,
            .title = "A line from right to left",
            .text = "My grandmother had a saying for every hour of the day. This one is for the hour "
                    "before guests arrive:\n"
                    "\n"
                    "البيت الضيق يسع ألف صديق\n"
                    "\n"
                    "A narrow house has room for a thousand friends. She would say it while carrying the "
                    "bed out on to the balcony, to make room for the table.",
            .age = 30500,
            .likes = 44,
            .comments =
                {
                    {Wen, "好听。"},
                    {Imani, "Could you post a recording?"},
                },
        },
        {
            .author = Imani,
            .title = "Five minutes, five colours 🎨",
            .text = "🟥 the post van\r\n"
                    "🟧 the inside of a melon\r\n"
                    "🟨 a raincoat, running\r\n"
                    "🟩 everything after the rain\r\n"
                    "🟦 the door I always mean to ask about",
            .age = 44000,
            .likes = 13,
            .images =
                {
                    {Meadow, 1600, 900},
                },
        },
        {
            .author = Marek,
            .title = "Correction",
            .text = "In an earlier article I said that the ferry takes nine minutes. It takes eleven. Two "
                    "of them are the ferryman deciding whether that was a cormorant.\r\n"
                    "\r\n"
                    "It was.",
            .age = 66000,
            .likes = 8,
        },
        {
            .author = Tove,
            .title = "List of things that are better slightly broken",
            .text = "Gates.\n"
                    "Pianos in pubs.\n"
                    "Bread.\n"
                    "Silence.",
            .age = 99000,
            .likes = 52,
            .comments =
                {
                    {Oskar, "Jeans. The moon."},
                    {Yara, "Umbrellas, if you like the people you share them with."},
                },
        },
        {
            .author = Ada,
            .title = "On <b>bold</b> claims & \"quotation\" marks",
            .text = "A friend sent me a text in which every other word was <em>emphasised</em>, with the "
                    "brackets showing. It read like somebody who has put on all their medals & cannot sit "
                    "down.\n"
                    "I have decided to keep my <angle brackets> for arithmetic: 1 < 2, and a \"quote\" for "
                    "when somebody said it.",
            .age = 140000,
            .likes = 6,
            .comments =
                {
                    {Oskar, "1 < 2 && 3 > 2; I checked."},
                },
        },
    };
}

}  // namespace ostrel
