#include "platform/uikit/PlatformText.h"

#include "platform/foundation/NSDate.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace ostrel {

namespace {

constexpr std::pair<std::string_view, std::string_view> simplifiedChinese[] = {
    {"Add", "添加"},
    {"Back", "返回"},
    {"Cancel", "取消"},
    {"Copied", "已拷贝"},
    {"Copy", "拷贝"},
    {"Copy All", "全部拷贝"},
    {"Copy Link", "拷贝链接"},
    {"Delete", "删除"},
    {"Done", "完成"},
    {"Edit", "编辑"},
    {"More Info", "详细信息"},
    {"Moved", "已移动"},
    {"Open in Browser", "在浏览器中打开"},
    {"Send by Mail", "用邮件发送"},
    {"Share", "分享"},
};

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool isTagOf(std::string_view tag, std::string_view language) {
    return tag == language || (tag.starts_with(language) && tag[language.size()] == '-');
}

/// Chinese without a script subtag is Simplified except where Traditional is written (BCP 47, CLDR likely subtags).
bool isSimplifiedChinese(std::string_view tag) {
    if (!isTagOf(tag, "zh")) return false;
    if (isTagOf(tag, "zh-hans")) return true;
    return !isTagOf(tag, "zh-hant") && !isTagOf(tag, "zh-tw") && !isTagOf(tag, "zh-hk") &&
           !isTagOf(tag, "zh-mo");
}

bool wantsChinese() {
    for (const std::string& language : NSLocale::current().preferredLanguages()) {
        const std::string tag = lowered(language);
        if (isSimplifiedChinese(tag)) return true;
        if (isTagOf(tag, "en")) return false;
    }
    return false;
}

}  // namespace

std::string platformText(std::string_view key) {
    if (wantsChinese()) {
        for (const auto& [english, chinese] : simplifiedChinese) {
            if (english == key) return std::string(chinese);
        }
    }
    return std::string(key);
}

}  // namespace ostrel
