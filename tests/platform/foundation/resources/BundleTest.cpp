#include "backends/headless/HeadlessText.h"
#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/resources/StringsFile.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

class NSBundleTest : public testing::Test {
protected:
    NSBundleTest() { NSLocale::install(locale_); }
    ~NSBundleTest() override { NSLocale::install(nullptr); }

    /// The text that a user with `languages` sees of a bundle with these language folders.
    std::string seen(std::vector<std::string> folders, std::vector<std::string> languages) {
        const TemporaryFolder bundle;
        for (const std::string& name : folders) {
            bundle.write(name + ".lproj/T.strings", "\"key\" = \"" + name + "\";");
        }
        locale_->languages = std::move(languages);
        return NSBundle::bundleWithPath(bundle.path())->localizedString("key", "", "T");
    }

    std::shared_ptr<HeadlessLocale> locale_ = std::make_shared<HeadlessLocale>();
    TemporaryFolder folder_;
};

TEST_F(NSBundleTest, ChoosesTheLanguage) {
    EXPECT_EQ(seen({"en", "zh-Hans"}, {"zh-Hans-CN", "en"}), "zh-Hans");
    EXPECT_EQ(seen({"en", "zh-Hans", "zh"}, {"zh"}), "zh");
    EXPECT_EQ(seen({"en", "zh-Hans", "zh-Hant"}, {"zh"}), "zh-Hans");
    EXPECT_EQ(seen({"en", "zh-Hans", "zh-Hant"}, {"zh-SG"}), "zh-Hans");
    EXPECT_EQ(seen({"en", "zh-Hans", "zh-Hant"}, {"zh-TW"}), "zh-Hant");
    EXPECT_EQ(seen({"en", "zh-Hans", "zh-Hant"}, {"zh_HK"}), "zh-Hant");
    EXPECT_EQ(seen({"en", "zh-Hans"}, {"zh-Hant-TW"}), "en");
    EXPECT_EQ(seen({"en", "zh-Hans"}, {"de-AT", "zh-CN", "en"}), "zh-Hans");
    EXPECT_EQ(seen({"pt-BR", "pt", "en"}, {"pt-BR"}), "pt-BR");
    EXPECT_EQ(seen({"pt-BR", "pt", "en"}, {"pt-PT"}), "pt");
    EXPECT_EQ(seen({"en", "fr"}, {"de"}), "en");
    EXPECT_EQ(seen({"fr", "it"}, {"de"}), "fr");
    EXPECT_EQ(seen({"zh_Hans"}, {"ZH-HANS"}), "zh_Hans");
    EXPECT_EQ(seen({}, {"en"}), "key");
}

TEST_F(NSBundleTest, ALanguageWithoutTheTableIsPassedOver) {
    locale_->languages = {"de", "en"};
    folder_.write("de.lproj/Other.strings", "\"key\"=\"de\";");
    folder_.write("en.lproj/T.strings", "\"key\"=\"en\";");
    const auto bundle = NSBundle::bundleWithPath(folder_.path());
    EXPECT_EQ(bundle->localizedString("key", "", "T"), "en");
    EXPECT_EQ(bundle->localizedString("missing", "", "T"), "missing");
    EXPECT_EQ(bundle->localizedString("missing", "default", "T"), "default");
    EXPECT_EQ(bundle->localizedString("key", "default", "No"), "default");
    EXPECT_EQ(bundle->localizedString("key", "default", "../en.lproj/T"), "default");
}

TEST_F(NSBundleTest, ABrokenTableIsUsedAsFarAsItGoesAndLogsItsLineOnce) {
    folder_.write("en.lproj/T.strings", "\"a\" = \"A\";\n\"b\" = oops;\n\"c\" = \"C\";\n");
    const auto bundle = NSBundle::bundleWithPath(folder_.path());
    const LogCapture log;
    EXPECT_EQ(bundle->localizedString("a", "", "T"), "A");
    EXPECT_EQ(bundle->localizedString("c", "", "T"), "c");
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_NE(log.lines()[0].find("en.lproj/T.strings"), std::string::npos) << log.lines()[0];
    EXPECT_NE(log.lines()[0].find("line 2"), std::string::npos) << log.lines()[0];
}

TEST_F(NSBundleTest, FindsResourcesOnlyInside) {
    folder_.write("bundle/add@2x.png", "x");
    folder_.write("bundle/sub/deep.png", "x");
    folder_.write("bundle/plain", "x");
    folder_.write("outside.png", "x");
    folder_.write("bundle/Inner.bundle/in.png", "x");
    const auto bundle = NSBundle::bundleWithPath(folder_.path("bundle"));
    const auto found = [&](std::string_view name, std::string_view type) {
        return bundle->pathForResource(name, type).has_value();
    };
    EXPECT_EQ(bundle->pathForResource("add@2x", "png"), folder_.path("bundle/add@2x.png"));
    EXPECT_TRUE(found("sub/deep", "png"));
    EXPECT_TRUE(found("sub/../add@2x", "png"));
    EXPECT_TRUE(found("plain", ""));
    EXPECT_FALSE(found("add", "png"));
    EXPECT_FALSE(found("", "png"));
    EXPECT_FALSE(found("../outside", "png"));
    EXPECT_FALSE(found("sub/../../outside", "png"));
    EXPECT_FALSE(found("..", ""));
    EXPECT_FALSE(found("sub/..", ""));
    EXPECT_FALSE(found(folder_.path("outside"), "png"));
    EXPECT_FALSE(found(std::string_view("plain\0", 6), ""));
    ASSERT_TRUE(bundle->bundleForResource("Inner"));
    EXPECT_TRUE(bundle->bundleForResource("Inner")->pathForResource("in", "png"));
    EXPECT_FALSE(bundle->bundleForResource("Missing"));
    EXPECT_FALSE(NSBundle::bundleWithPath(folder_.path("outside.png")));
}

TEST_F(NSBundleTest, IsFoundByIdentifierAndAsTheMainOne) {
    EXPECT_TRUE(
        std::filesystem::exists(NSBundle::mainBundle()->path() + "/" + std::string(program_invocation_short_name)));
    NSBundle::setMainBundlePath(folder_.path());
    EXPECT_EQ(NSBundle::mainBundle()->path(), folder_.path());
    NSBundle::setMainBundlePath("");
    NSBundle::registerBundle("org.example.module", folder_.path());
    NSBundle::registerBundle("org.example.gone", folder_.path("gone"));
    ASSERT_TRUE(NSBundle::bundleWithIdentifier("org.example.module"));
    EXPECT_EQ(NSBundle::bundleWithIdentifier("org.example.module")->path(), folder_.path());
    EXPECT_FALSE(NSBundle::bundleWithIdentifier("org.example.gone"));
    EXPECT_FALSE(NSBundle::bundleWithIdentifier("org.example"));
}

TEST(StringsFile, ReadsEntriesCommentsAndEscapes) {
    const auto file =
        detail::parseStringsFile("\xEF\xBB\xBF/* head\n\"no\"=\"no\"; */\n"
                                 "// \"no\" = \"no\";\r\n"
                                 "\"a\"=\"A\"; \"b\" /* x */ = // y\n \"B\" ;\n"
                                 "\"esc\\\"\\\\\" = \"line\\nnext\\t\\'q\\' // no comment \\U6587\\uD83D\\uDE00\";\n"
                                 "\"%ld min ago\" = \"%ld \xE5\x88\x86\xE9\x92\x9F\";\n"
                                 "\"empty\" = \"\";\"a\" = \"A2\";\n//end");
    EXPECT_EQ(file.error, "");
    const std::map<std::string, std::string, std::less<>> expected{
        {"a", "A2"},
        {"b", "B"},
        {"esc\"\\", "line\nnext\t'q' // no comment \xE6\x96\x87\xF0\x9F\x98\x80"},
        {"%ld min ago", "%ld \xE5\x88\x86\xE9\x92\x9F"},
        {"empty", ""}};
    EXPECT_EQ(file.texts, expected);
}

TEST(StringsFile, KeepsTheEntriesBeforeAnErrorAndNamesItsLine) {
    const std::tuple<const char*, const char*> cases[] = {
        {"\"b\" = \"B\"", "line 2: a \";\""},        {"\"b\" \"B\";", "line 2: a \"=\""},
        {"\"b\" =\n ;", "line 3: a text in quotes"}, {"\nb = \"B\";", "line 3: a key"},
        {"\"b\n\n", "line 2: a text does not end"},  {"/* b\n\n", "line 2: a comment"},
        {"\"b\"=\"\\q\";", "line 2: an escape"},     {"\"b\"=\"\\U12\";", "line 2: an escape"},
        {"\"b\"=\"\\UD83D\";", "line 2: an escape"}, {"\"b\"=\"\\UDE00\";", "line 2: an escape"},
        {"\"b\"=\"\\", "line 2: an escape"},         {"\"b\"=\n\"\xFF\";", "line 3: the file is not valid UTF-8"},
    };
    for (const auto& [rest, line] : cases) {
        SCOPED_TRACE(rest);
        const auto file = detail::parseStringsFile(std::string("\"a\" = \"A\";\n") + rest);
        EXPECT_TRUE(file.error.starts_with(line)) << file.error;
        EXPECT_EQ(file.texts.size(), 1u);
    }
}

}  // namespace
}  // namespace ostrel
