#include "articleserver/sample/SampleContent.h"

namespace ostrel {

std::vector<SampleArticle> sampleArticlesOfFarAway() {
    using enum SampleAuthor;
    using enum SampleScene;
    return {
        {
            .author = Marek,
            .title = "Harbour, early",
            .text = "Five boats out, one in. The one that stayed is being spoken to by its owner.",
            .age = 3,
            .likes = 9,
            .images =
                {
                    {Harbour, 1600, 900, "Nobody has said anything yet."},
                },
        },
        {
            .author = Yara,
            .title = "Letters from the salt road",
            .text = "Day one. We left before the stars did. The guide walks in front without a map and "
                    "without, as far as I can see, looking at anything in particular. When I asked him how "
                    "he knew the way he thought about it until noon and then said, \"It is the part that "
                    "is not the other parts.\"\n"
                    "\n"
                    "Day two. The wind drew all night, and in the morning every line was new. Sand is "
                    "never the same colour twice: grey, then rose, then for an hour a yellow so plain that "
                    "one could have bought it in a shop, then white, then blue. The mule had opinions "
                    "about the map.\n"
                    "\n"
                    "Day three. Salt. At first a rim on the stones, like the line left by a bath; then "
                    "plates of it, tilted, ringing when you stepped on them. We walked for six hours on "
                    "something between a floor and a piano.\n"
                    "\n"
                    "Day four. The wells. Three palms, a wall, a bucket on a rope worn as smooth as a "
                    "wrist. An old woman gave us bread and wanted to know about the sea, which she had not "
                    "seen, and I heard myself describe it as a kind of desert, with wind in it and a line "
                    "at the end, where the colours change all day. She nodded. \"And wells?\" she asked.\n"
                    "\n"
                    "I said that I would look for them.",
            .age = 260,
            .likes = 51,
            .images =
                {
                    {Dunes, 1200, 800, "The second morning. We walked along the edge, where the sand holds."},
                    {Dunes, 800, 1200, "Looking back."},
                    {Dunes, 1600, 700, "The last ridge before the wells."},
                },
            .comments =
                {
                    {Oskar, "How much water did you carry?"},
                    {Yara, "Six litres a day each, and the mule carried the rest with an expression."},
                    {Ada, "\"The mule had opinions about the map.\" More about the mule, please."},
                },
        },
        {
            .author = Oskar,
            .title = "Over the pass with a borrowed tent",
            .text = "The tent came with a warning: it leaks, but only on the left. I packed accordingly.\n"
                    "\n"
                    "The path goes up through larches for an hour, then through the memory of larches, and "
                    "then there is nothing taller than your ankle and you can see what you have let "
                    "yourself in for. The pass is a notch, like the one on a rifle. It stayed exactly as "
                    "far away as it had been at breakfast until, all at once, at about three, I was "
                    "standing in it.\n"
                    "\n"
                    "There is a thing that happens at the top of a pass and nowhere else. On a summit you "
                    "look round; on a pass you look through. Behind you a whole country that you know by "
                    "its sore places, and in front of you another, folded up, blue at the edges, with a "
                    "lake in it the size of a coin.\n"
                    "\n"
                    "It rained in the night. On the left.\n"
                    "\n"
                    "I lay on the right and listened to it, and in the morning the notch was full of "
                    "cloud, pouring over very slowly from their side to ours, like milk from a jug that "
                    "somebody has forgotten they are holding.",
            .age = 2880,
            .likes = 77,
            .images =
                {
                    {Ridges, 1200, 800, "First light, from the tent. It leaks only on the left."},
                    {Lake, 900, 1200, "The tarn below the hut."},
                    {Forest, 1200, 800, "The way down, in cloud."},
                },
            .comments =
                {
                    {Tove, "I know that tent. Keep your boots on the right."},
                    {Imani, "The second photograph is now my desktop."},
                    {Marek, "Did you ever find the other pole?"},
                },
        },
        {
            .author = Ada,
            .title = "The lake has two shores and one ferry",
            .text = "The ferry crosses every hour, whether anybody is waiting or not. I asked the ferryman "
                    "why. \"If I only went when somebody was there,\" he said, \"I should have to look.\"\n"
                    "\n"
                    "I crossed four times. The lake is narrow and deep, with a shore for people who get up "
                    "early and another for people who like the evening, and the ferry goes to and fro "
                    "between them all day long like somebody who cannot decide, but does not mind.",
            .age = 7200,
            .likes = 39,
            .images =
                {
                    {Lake, 1400, 900, "Half past six, the only customers being ducks."},
                },
            .comments =
                {
                    {Yara, "I would ride it all day too."},
                },
        },
        {
            .author = Tove,
            .title = "North, until the road gave up",
            .text = "Past the last petrol station there is a sign with a reindeer on it and below it a "
                    "second sign with the number 240. After that the forest closes and for a long time "
                    "nothing happens, in the best possible way.\n"
                    "\n"
                    "One begins to notice small things. That the lakes are not all the same dark: some are "
                    "tea, some are ink. That every few kilometres there is a letter box, alone, on a post, "
                    "facing the road, and never a house; somewhere behind each of them people must be "
                    "living at the end of very long sentences.\n"
                    "\n"
                    "Towards evening, although there is no evening there in June, the trees got shorter. "
                    "Then they got fewer. The road lost its line, then its edges, then its tar. It did not "
                    "so much end as lose interest: gravel, grass, a turning place, two stones, the sea.\n"
                    "\n"
                    "I switched off the engine. The sun stood a hand above the water and was clearly not "
                    "going anywhere. I stayed until it began to climb again.",
            .age = 19000,
            .likes = 66,
            .images =
                {
                    {Forest, 3200, 1600,
                     "The last sixty kilometres looked like this. I did not want them to end."},
                    {SeaDawn, 1200, 800, "It is not dawn. It is a quarter to midnight."},
                },
            .comments =
                {
                    {Oskar, "\"The road did not so much end as lose interest.\" Perfect."},
                    {Yara, "How were the midges?"},
                    {Tove, "Numerous."},
                },
        },
        {
            .author = Imani,
            .title = "Three stations",
            .text = "At the first station a man sold tea through the window of the train. You drank it, "
                    "handed the glass back as the train began to move, and he walked along beside you, "
                    "then trotted, and always, they say, has got every glass.\n"
                    "\n"
                    "At the second there was no platform. We climbed down into a field of beans.\n"
                    "\n"
                    "The third was ours. It had a roof of blue tiles, a clock, a stationmaster with a flag "
                    "and a dog who knew the timetable. We were the only ones who got off. The "
                    "stationmaster shook hands with each of us, as if we had been expected, and then went "
                    "inside and shut the ticket window, and the dog lay down.",
            .age = 52000,
            .likes = 24,
        },
        {
            .author = Marek,
            .title = "Low tide, and what it keeps",
            .text = "Twice a day the sea goes out and shows you its pockets. Today: rope, green and "
                    "orange. A door handle. Eleven razor shells, arranged by nobody. A bottle without a "
                    "message. A light bulb, whole, from heaven knows where, having come through "
                    "everything. One left shoe.\n"
                    "\n"
                    "I put the bulb in a lamp at home, for a joke. It worked.",
            .age = 86000,
            .likes = 35,
            .images =
                {
                    {SeaDawn, 900, 1200, "You can walk out for an hour."},
                    {Harbour, 1200, 800, "And then you had better walk back.", 3},
                },
            .videos =
                {
                    {SampleClip::Sea, "The hour itself, shortened."},
                },
            .comments =
                {
                    {Ada, "A left shoe! It is always a left shoe."},
                },
        },
        {
            .author = Yara,
            .title = "Packing list, revised",
            .text = "Take: half the clothes and twice the socks.\n"
                    "Take: a length of string. You will not know why until you do.\n"
                    "Take: one book that is better than you are.\n"
                    "Leave: the other books.\n"
                    "Leave: the adapter. They will have one, and you will have talked to somebody.\n"
                    "Leave: a note on the kitchen table, for yourself, saying what you hoped for. Do not "
                    "read it until a week after you are back.",
            .age = 150000,
            .likes = 58,
            .openComment = false,
        },
        {
            .author = Oskar,
            .title = "Up the river on foot, in nine days and a half",
            .text = "I wanted to see where it came from. All my life it had gone past the end of our road, "
                    "brown and wide and in no hurry, with the air of having been somewhere; and one "
                    "morning in May I tied my boots, went down to the harbour, put a hand in the water and "
                    "turned left.\n"
                    "\n"
                    "The first day is all cranes and mud. The river does not know yet which way to go: "
                    "twice a day it changes its mind and runs uphill. You walk on the dyke with sheep on "
                    "one side of you and ships on the other, and the ships are higher. I slept in a room "
                    "above a ferry office. All night long the ropes talked.\n"
                    "\n"
                    "On the second day the salt gives up. I tasted it, every hour or so, like somebody "
                    "testing a soup: sea, sea, mostly sea, and then about noon, by a bend with a ruined "
                    "kiln, nothing. Only water. A heron stood there as if it had been posted to mark the "
                    "place.\n"
                    "\n"
                    "Day three belongs to the locks. There are seven. At each of them there is a small "
                    "house, a large vegetable garden and a dog, and at each I was asked the same question "
                    "in the same words: down or up? Up, I said. Ah, they said, up; and looked at my boots. "
                    "At the fourth the keeper's wife gave me a cabbage. I carried it for two days, out of "
                    "respect.\n"
                    "\n"
                    "Day four: water meadows. The path goes along on planks, and to either side there is "
                    "more sky underneath than overhead. I met nobody except a mole catcher, who walked "
                    "with me for an hour. A river, he said, is mostly other people's water. He had worked "
                    "it out once. Of what goes past my house no more than a cupful starts at the spring; "
                    "the rest joins on the way, from roofs and ditches and fields, and every drop of it "
                    "thinks that it is the river.\n"
                    "\n"
                    "On day five I lost it. That is quite hard to do with a river. There was a town, and "
                    "in the town a bridge, and on the other side of the bridge two of them, both brown, "
                    "both sure of themselves. I asked at the bakery. They disagreed there, mother against "
                    "daughter, with some heat; it seems that they always have. I took the left, because "
                    "the mother gave me a bun.\n"
                    "\n"
                    "Day six, rain, the whole of it. The hills began. The river had got a voice in the "
                    "night, and stones.\n"
                    "\n"
                    "Day seven was forest, and I shall remember it when I have forgotten the rest. By now "
                    "I could have jumped across, and did, several times, for no reason. The path had "
                    "stopped pretending. I went up from pool to pool, from root to root, and each pool had "
                    "a trout in it, exactly one, hanging there in the clear brown light like something "
                    "that somebody was about to say.\n"
                    "\n"
                    "Day eight. Above the trees. It had no name any more on the map, and the line that "
                    "stood for it had gone from two strokes to one. It went under a fence, under a road, "
                    "under a snowdrift with a blue door at either end. I ate the last of the cabbage.\n"
                    "\n"
                    "On day nine I walked through bog, up a slope the colour of a lion, following a wet "
                    "place in the grass. Then there was no wet place. I stood still. Behind me the whole "
                    "country went down in folds to a brightness that might have been the sea. In front "
                    "there was moss, and a stone, and when I knelt down and held my breath, a sound like a "
                    "very small clock.\n"
                    "\n"
                    "I put my hand in. It was so cold that it took me a moment to know that it was wet. I "
                    "do not know what I had expected; there was about enough for a cup of tea.\n"
                    "\n"
                    "The half day was the walk to the bus. It took two hours and ten minutes to bring me "
                    "home, along the valley, and I saw it all go by again the other way round: trout, bun, "
                    "cabbage, dog. At the end of our road I got off and went down to the bank. It was "
                    "getting dark. It came along as it always does, brown, wide and in no hurry.\n"
                    "\n"
                    "\"Hello,\" I said. I knew about a cupful of it personally.",
            .age = 25200,
            .likes = 118,
            .images =
                {
                    {Harbour, 1200, 800, "Day one. It is salt here, and has no opinion about direction."},
                    {Meadow, 1400, 900, "Day four, the water meadows."},
                    {Forest, 800, 1200, "Day seven. From here on one hears it more than one sees it."},
                    {Ridges, 1600, 800, "Day nine, nearly."},
                },
            .comments =
                {
                    {Ada, "I have read this three times and bought socks."},
                    {Wen, "溯流而上,最后找到的是自己的脚步声。"},
                    {Tove, "\"A river is mostly other people's water.\" I shall borrow that."},
                    {Marek, "The mole catcher! I have met him. He told me the opposite."},
                },
        },
    };
}

}  // namespace ostrel
