#include "platform/foundation/resources/PlatformText.h"

#include "platform/foundation/runloop/NSDate.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace ostrel {

namespace {

constexpr std::pair<std::string_view, std::string_view> simplifiedChinese[] = {
    {"%ld hr %ld min left", "剩余 %ld 小时 %ld 分钟"},
    {"%ld in progress", "%ld 项进行中"},
    {"%ld items", "%ld 项"},
    {"%ld min left", "剩余 %ld 分钟"},
    {"%ld photos", "%ld 张照片"},
    {"%ld sec left", "剩余 %ld 秒"},
    {"%ld videos", "%ld 个视频"},
    {"1 item", "1 项"},
    {"1 photo", "1 张照片"},
    {"1 video", "1 个视频"},
    {"A few seconds left", "剩余几秒"},
    {"Add", "添加"},
    {"Back", "返回"},
    {"Browse…", "浏览…"},
    {"Cancel", "取消"},
    {"Cancelling…", "正在取消…"},
    {"Cannot be used", "无法使用"},
    {"Choose a File", "选取文件"},
    {"Choose a File…", "选取文件…"},
    {"Converting \"%@\"", "正在转换“%@”"},
    {"Copied", "已拷贝"},
    {"Copy", "拷贝"},
    {"Copy All", "全部拷贝"},
    {"Copy Link", "拷贝链接"},
    {"Delete", "删除"},
    {"Done", "完成"},
    {"Edit", "编辑"},
    {"In progress", "进行中"},
    {"It is no clip.", "这不是视频。"},
    {"It is no picture in a known format.", "这不是可识别格式的图片。"},
    {"More Info", "详细信息"},
    {"Moved", "已移动"},
    {"No Photos", "没有照片"},
    {"No Photos or Videos", "没有照片或视频"},
    {"No Videos", "没有视频"},
    {"OK", "好"},
    {"Open in Browser", "在浏览器中打开"},
    {"Photo %1 of %2", "照片 %1，共 %2"},
    {"Photos", "照片"},
    {"Photos and Videos", "照片和视频"},
    {"Send by Mail", "用邮件发送"},
    {"Share", "分享"},
    {"Some folders could not be read.", "有些文件夹无法读取。"},
    {"The clips in your videos folder appear here.", "“视频”文件夹中的片段显示在这里。"},
    {"The picture is damaged.", "图片已损坏。"},
    {"The picture is too large.", "图片过大。"},
    {"The pictures in your pictures folder appear here.", "“图片”文件夹中的图片显示在这里。"},
    {"There is no video in it.", "其中没有视频。"},
    {"There is nothing on the clipboard that can be used here.", "剪贴板上没有可在此使用的内容。"},
    {"This File Cannot Be Used", "无法使用此文件"},
    {"Uploading \"%@\"", "正在上传“%@”"},
    {"Video %1 of %2", "视频 %1，共 %2"},
    {"Videos", "视频"},
    {"You can also drop a file here or paste a picture.", "也可以将文件拖到这里，或粘贴图片。"},
    {"You can also drop a file here.", "也可以将文件拖到这里。"},
};

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool isTagOf(std::string_view tag, std::string_view language) {
    return tag == language || (tag.starts_with(language) && tag[language.size()] == '-');
}

/// Chinese without a script subtag is Simplified, except in regions that write Traditional (CLDR likely
/// subtags).
bool isSimplifiedChinese(std::string_view tag) {
    if (!isTagOf(tag, "zh")) return false;
    if (isTagOf(tag, "zh-hans")) return true;
    return !isTagOf(tag, "zh-hant") && !isTagOf(tag, "zh-tw") && !isTagOf(tag, "zh-hk") && !isTagOf(tag, "zh-mo");
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
