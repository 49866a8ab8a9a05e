#include "articleserver/sample/SampleContent.h"

namespace ostrel {

std::vector<SampleArticle> chineseSampleArticles() {
    using enum SampleAuthor;
    using enum SampleScene;
    return {
        {
            .author = Lin,
            .title = "雨后的巷子",
            .text = "刚下过一场雨,巷子里的石板亮得像一面面小镜子。卖豆花的推车停在转角,白汽一团一团地冒上来"
                    "。我没有带伞,也不着急。",
            .age = 1,
            .likes = 7,
            .images =
                {
                    {Street, 800, 1200, "石板路还没干。"},
                },
        },
        {
            .author = Wen,
            .title = "一个人的早餐",
            .text = "豆浆要咸的,油条要刚出锅的,碗要有一个小小的豁口,正好对着左边。\n"
                    "\n"
                    "六点半的小店里,每个人都对着自己的碗,谁也不看手机。老板把找零压在碟子底下,轻轻推过来,像"
                    "在下一步很有把握的棋。",
            .age = 20,
            .likes = 22,
            .comments =
                {
                    {Lin, "咸豆浆,加一点点醋,完美。"},
                    {Oskar, "I do not read Chinese yet but I know a good breakfast when I see one."},
                },
        },
        {
            .author = Lin,
            .title = "在阳台上种葱",
            .text = "买菜时顺手留下的葱根,随便插在一只旧搪瓷杯里,放在阳台的角落,第三天就冒出了绿尖。\n"
                    "\n"
                    "我每天早上去看它一眼,像看一个不太熟但是很有礼貌的邻居。它不声不响地往上长,一天一节手指"
                    "那么高。到了第二周,我煮面的时候终于下了决心,剪了两根。\n"
                    "\n"
                    "那碗面吃得特别慢。",
            .age = 720,
            .likes = 41,
            .images =
                {
                    {Teapot, 1200, 900, "等它发芽的时候。"},
                },
            .comments =
                {
                    {Wen, "我家的葱已经三代同堂了。"},
                    {Tove, "Are those spring onions? They look very determined."},
                    {Imani, "🌱🌱🌱"},
                },
        },
        {
            .author = Wen,
            .title = "修一把旧伞",
            .text = "伞骨断了一根,布还是好的。巷口的老师傅戴上眼镜,用一截细铁丝、两下钳子,三分钟就接好了。"
                    "\n"
                    "\n"
                    "我问多少钱。他摆摆手:\"下雨的时候,记得把它撑得高一点,让旁边的人也躲一躲。\"",
            .age = 2500,
            .likes = 35,
        },
        {
            .author = Lin,
            .title = "骑车去看海",
            .text = "凌晨三点半出门,街灯一盏一盏地往后退,整座城市只有我和环卫工人的扫帚声。\n"
                    "\n"
                    "四十公里,说远不远。前二十公里靠热情,后二十公里靠面子:已经发了消息说要去看日出,总不能半"
                    "路上在早点摊坐下来。\n"
                    "\n"
                    "快到海边的时候,风忽然变了味道,咸的,凉的。我停下来喝了一口水,抬头,天边已经裂开了一条橘"
                    "红色的缝。剩下的两公里我骑得飞快,像小时候怕错过动画片那样。\n"
                    "\n"
                    "赶上了。太阳出来的时候没有声音,可是海滩上的每一个人,都同时\"啊\"了一声。",
            .age = 12000,
            .likes = 96,
            .images =
                {
                    {SeaDawn, 1200, 800, "到的时候,太阳刚好离开水面。"},
                    {Bicycle, 1200, 900, "陪我来的那一位。"},
                    {Harbour, 1600, 800, "回程的渡口。"},
                },
            .videos =
                {
                    {SampleClip::Wheel, "路上。"},
                    {SampleClip::Sea, ""},
                },
            .comments =
                {
                    {Marek, "Forty kilometres for a sunrise. Respect."},
                    {Wen, "下次叫上我,我带茶。"},
                    {Oskar, "What a frame! The bicycle, I mean. The sea is good too."},
                },
        },
        {
            .author = Wen,
            .title = "老电影院的最后一排",
            .text = "最后一排的座位吱呀作响,放映机的光从头顶越过去,里面有灰尘在慢慢地游。\n"
                    "\n"
                    "散场的时候,我总是等到字幕走完。看门的大爷也不催,只把门推开一条缝,让外面的夜色先进来坐"
                    "一会儿。",
            .age = 28000,
            .likes = 28,
            .openComment = false,
        },
        {
            .author = Lin,
            .title = "菜市场的十二种绿",
            .text = "青椒绿、黄瓜绿、菠菜绿、豌豆绿、葱绿、韭菜绿、丝瓜绿、莴笋绿、芥蓝绿、薄荷绿、苦瓜绿。"
                    "\r\n"
                    "\r\n"
                    "还有一种,是卖菜阿姨围裙的绿。洗了很多次,已经有点发白,可是一眼就能认出来:全市场的菜,都"
                    "是从那一抹绿里长出来的。",
            .age = 58000,
            .likes = 60,
            .images =
                {
                    {Meadow, 1200, 800, "第十三种。"},
                },
            .comments =
                {
                    {Yara, "你写的颜色我都闻到了。"},
                    {Wen, "苦瓜绿排第几?"},
                },
        },
        {
            .author = Wen,
            .title = "",
            .text = "山不说话。我也不说。很好。",
            .age = 105000,
            .likes = 19,
            .images =
                {
                    {Ridges, 500, 1600},
                },
        },
        {
            .author = Lin,
            .title = "外婆的缝纫机",
            .text = "外婆的缝纫机靠窗放着,机头上的金色花纹已经磨掉了一半。她踩踏板的节奏,就是我小时候午睡的"
                    "节奏:嗒嗒嗒,停一下,嗒嗒嗒嗒。\n"
                    "\n"
                    "有一年夏天,她用一条旧窗帘给我做了一条裙子。裙摆上有整整一排小帆船,原本是挂在窗户右下角"
                    "的。我穿着它在院子里转圈,外婆笑着说:\"慢一点,船要开走了。\"\n"
                    "\n"
                    "后来搬了三次家,丢了很多东西,缝纫机一直在。前几天我给它上了油,试着踩了一下。\n"
                    "\n"
                    "嗒嗒嗒。停一下。窗外的风正好吹进来。",
            .age = 160000,
            .likes = 83,
            .comments =
                {
                    {Tove, "My grandmother had one exactly like it, down to the drawer with the broken "
                           "handle."},
                    {Ada, "The sound of the treadle! I had forgotten that I remembered it."},
                },
        },
    };
}

}  // namespace ostrel
