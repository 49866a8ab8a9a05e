#include "reader/services/ReaderText.h"

#include "platform/foundation/runloop/NSDate.h"

#include <array>
#include <utility>

namespace ostrel {

namespace {

using Entry = std::pair<std::string_view, std::string_view>;
constexpr std::array<Entry, 26> simplifiedChinese{{
    {"Ostrel Reader", "Ostrel 阅读"},
    {"Articles", "文章"},
    {"My Articles", "我的文章"},
    {"Sign In", "登录"},
    {"Sign Out", "退出登录"},
    {"Cancel", "取消"},
    {"Signed in as %@", "已登录：%@"},
    {"Signed in as %@.", "已登录：%@。"},
    {"There are no articles yet.", "还没有文章。"},
    {"You have not written an article yet.", "你还没有写过文章。"},
    {"Messages", "消息"},
    {"Help", "帮助"},
    {"Log", "日志"},
    {"Log - Ostrel Reader", "日志 - Ostrel 阅读"},
    {"Nothing has been logged.", "还没有日志。"},
    {"Follow", "跟随"},
    {"on", "开"},
    {"off", "关"},
    {"Copy All", "全部拷贝"},
    {"Copied", "已拷贝"},
    {"Clear", "清除"},
    {"Close", "关闭"},
    {"You have no messages.", "没有消息。"},
    {"Signed out.", "已退出登录。"},
    {"The articles could not be loaded. %@", "无法加载文章。%@"},
    {"Try again", "重试"},
}};

}  // namespace

std::string readerText(std::string_view key) {
    const auto languages = NSLocale::current().preferredLanguages();
    if (!languages.empty() && languages.front().starts_with("zh")) {
        for (const auto& [english, chinese] : simplifiedChinese) {
            if (english == key) return std::string(chinese);
        }
    }
    return std::string(key);
}

}  // namespace ostrel
