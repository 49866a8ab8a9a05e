#include "articleserver/sample/SampleContent.h"

namespace ostrel {

std::vector<SampleArticle> sampleArticlesOfWorkshop() {
    using enum SampleAuthor;
    using enum SampleScene;
    return {
        {
            .author = Oskar,
            .title = "Thirty frames and no screen",
            .text = "I found a camera at the flea market with thirty frames of film left in it, and made a "
                    "rule: one a day, no more, and nothing to look at until the end.\n"
                    "\n"
                    "On the first day I took nothing until dusk, because everything might have been the "
                    "one. On the fifth I took it before breakfast and was free for the rest of the day. By "
                    "the second week I had noticed that I was seeing the picture, nodding to it, and then, "
                    "quite often, leaving it there.\n"
                    "\n"
                    "Thirty days later I collected the prints. Nine are blurred, six are of my thumb in "
                    "various moods, and of the rest I would keep three. But I remember all thirty of those "
                    "days, each by its light, and I could not tell you a single thing about the month "
                    "before.",
            .age = 150,
            .likes = 45,
            .images =
                {
                    {SeaDawn, 1200, 800, "Frame eleven. I had forgotten that I took it."},
                },
            .comments =
                {
                    {Marek, "Frame eleven!"},
                    {Lin, "胶片的等待也是照片的一部分。"},
                },
        },
        {
            .author = Ada,
            .title = "The bicycle in the hall",
            .text = "It stood in the hall when I moved in, and nobody knew whose it was. The tyres were "
                    "flat and had grown to the floor. The previous tenant thought it belonged to the one "
                    "before; the landlord thought it belonged to the house.\n"
                    "\n"
                    "I began with the bell, since that was the part I could reach from the stairs. Under "
                    "the green there was brass. After the bell it seemed unkind to leave the handlebars, "
                    "and after the handlebars there was, as there always is, the rest.\n"
                    "\n"
                    "It took eleven evenings. I now know what a cotter pin is, and several ways of "
                    "addressing one. The chain had to be soaked; the saddle only needed to be sat on. When "
                    "I took the wheels off, the floor beneath them had the pattern of the old tiles, as "
                    "bright as on the day they were laid.\n"
                    "\n"
                    "Yesterday I rode it to the river and back. Halfway along the embankment an old man "
                    "who was walking the other way stopped, turned right round, and looked after us with "
                    "such a smile that I very nearly went back to ask him.\n"
                    "\n"
                    "I did not. I rang the bell. He raised his hat, to one of us.",
            .age = 1000,
            .likes = 82,
            .images =
                {
                    {Bicycle, 1200, 800, "After the second coat."},
                    {Bicycle, 900, 1200, "Portrait format, because it deserves one."},
                },
            .comments =
                {
                    {Oskar, "The basket is an inspired decision."},
                    {Tove, "What did you use on the rust?"},
                    {Ada, "Patience, mostly. And kitchen foil, dipped in vinegar."},
                    {Marek, "I remember that bicycle when it was blue!"},
                },
        },
        {
            .author = Marek,
            .title = "A film I have only ever seen the end of",
            .text = "Three times now I have come in to find it already on. Each time there are about "
                    "twelve minutes left. A woman in a raincoat carries a ladder through an empty town; "
                    "somebody calls out to her from a window; she puts the ladder up against a wall on "
                    "which there is nothing at all, climbs it, and laughs. Then a shot of the sea, and the "
                    "music.\n"
                    "\n"
                    "I do not know who she is. I do not know what was on the wall. I have asked people, "
                    "and have described the ladder with both hands, and everybody says that it sounds "
                    "familiar.\n"
                    "\n"
                    "At this point, frankly, I would rather not find out.",
            .age = 6000,
            .likes = 30,
            .comments =
                {
                    {Yara, "There is a lighthouse in it? I think I have seen the beginning. We should talk."},
                },
        },
        {
            .author = Tove,
            .title = "Sharpening",
            .text = "A stone, some water, a blade, twenty minutes. At first you hear a scrape. After a "
                    "while the scrape becomes a hiss, and the hiss becomes a sort of breath, and when you "
                    "cannot hear it any more you are done.\n"
                    "\n"
                    "It is the only work I know that gets quieter as it gets better.",
            .age = 11500,
            .likes = 17,
        },
        {
            .author = Imani,
            .title = "Notes on carrying a notebook",
            .text = "1. It must be smaller than your largest pocket and uglier than your handwriting.\n"
                    "2. The first page is for crossing things out on, so that it is over with.\n"
                    "3. Whatever you write down, write down where you were. The thought will not keep; the "
                    "bench will.\n"
                    "4. Lend the pen. Never the notebook.\n"
                    "5. When it is full, put it in the drawer with the others and do not read it for a "
                    "year. Then read it as if it had been written by somebody of whom you are fond.",
            .age = 23000,
            .likes = 38,
            .comments =
                {
                    {Oskar, "Number four is why I carry two."},
                    {Ada, "I have one that has been \"the new one\" for six years."},
                },
        },
        {
            .author = Yara,
            .title = "The choir that meets in a car park",
            .text = "Nobody planned it. There was a burst pipe at the church hall, it was raining, and "
                    "level two of the multi-storey was dry. Somebody hummed an A to see what would happen. "
                    "What happened was seven seconds of A.\n"
                    "\n"
                    "We have been back every Thursday since. You cannot sing fast down there; the place "
                    "will not have it. Whatever you sing is joined by whatever you sang just before, so "
                    "one learns to leave room and to think of the next note as a guest for whom the last "
                    "one has kept a chair.\n"
                    "\n"
                    "Drivers come up the ramp with their headlights on, and stop, and wind their windows "
                    "down. Some of them stay. Last week, when we had finished, there was a silence with "
                    "the end of the chord still walking about in it, and then, from a small grey car in "
                    "the corner, the softest possible toot of a horn.\n"
                    "\n"
                    "It was a D. It was exactly what had been missing.",
            .age = 37000,
            .likes = 94,
            .comments =
                {
                    {Imani,
                     "Level two, on Thursdays? I will bring my aunt, she is an alto and she is bored."},
                    {Tove, "Concrete is the great equaliser of sopranos."},
                },
        },
        {
            .author = Oskar,
            .title = "Wheels, straightened",
            .text = "A wheel is a conversation between thirty-six spokes. Tighten one and its neighbours "
                    "notice. If you do it in temper you get an argument; a quarter of a turn at a time, "
                    "going round, listening, you get an agreement that will carry eighty kilos over "
                    "cobbles for ten years.\n"
                    "\n"
                    "There is a note, too. Pluck them as you go. When they all give nearly the same one, "
                    "leave it. Nearly is what keeps it round.",
            .age = 64000,
            .likes = 23,
            .images =
                {
                    {Bicycle, 1600, 900, "Before the long way home."},
                },
            .videos =
                {
                    {SampleClip::Wheel, "Round, nearly."},
                },
        },
        {
            .author = Marek,
            .title = "What the projectionist told me",
            .text = "\"People think that one watches the films,\" she said. \"One watches the corner.\" In "
                    "the top right-hand corner, eight seconds before the end of a reel, there is a dot. "
                    "You start the other machine. Seven seconds later there is a second dot, and you "
                    "change over. If you do it well, nobody in the house has noticed anything, and that is "
                    "the whole of the art.\n"
                    "\n"
                    "She did it for thirty-one years: five reels a film, three houses a day. She has never "
                    "seen the middle of most of the great love stories, she said, because that is when you "
                    "rewind; but she has seen more kisses coming than anybody living.\n"
                    "\n"
                    "I asked whether she ever went to the pictures now. She does, on Wednesdays, in the "
                    "afternoon. There are no dots any more. But eight seconds before each place where the "
                    "reel would have ended, she said, and you may believe this or not, she wakes up.",
            .age = 175000,
            .likes = 69,
            .comments =
                {
                    {Ada, "The last paragraph. Goodness."},
                    {Yara, "I still look for the dot in the corner."},
                },
        },
    };
}

}  // namespace ostrel
