#include "tests/article/editor/ArticleEditTest.h"

namespace ostrel {
namespace {

TEST_F(ArticleEditTest, HostileRecordsOpenAndClose) {
    for (const std::string& article : hostileRecords()) {
        openExisting(article);
        dragTable();
        EXPECT_EQ(images().imagesArray()->size(), record(article)["images"].elements().size()) << article;
        EXPECT_EQ(videos().videosArray()->size(), record(article)["videos"].elements().size()) << article;
        settleRequests();
        EXPECT_EQ(editor->titleField()->text(), recordText(record(article), "title")) << article.substr(0, 100);
        EXPECT_TRUE(isOpen());
    }
    for (const char* element : {"{}", "null", "7", "\"x\"", "[]", R"({"id":{},"text":[],"thumbnail":7})",
                                R"({"text":7,"thumbnail":"\u0000"})"}) {
        const std::string elements = std::string("[") + element + "," + element + "]";
        openExisting(R"({"id":1,"images":)" + elements + R"(,"videos":)" + elements + "}");
        const bool isRecord = *element == '{';
        EXPECT_EQ(images().imagesArray()->size(), isRecord ? 2u : 0u) << element;
        EXPECT_EQ(videos().videosArray()->size(), isRecord ? 2u : 0u) << element;
        settleRequests();
    }
}

TEST_F(ArticleEditTest, FiveHundredImagesAreAFewTiles) {
    openExisting(articleWith(500));
    EXPECT_EQ(table().rectForRowAtIndexPath({1, 0}).height(), 502 * 10 + 501 * 86);
    EXPECT_LT(images().collectionView()->liveCellCount(), 40u);
    table().setContentOffset({0, 20'000});
    platform.settle();
    EXPECT_LT(images().collectionView()->liveCellCount(), 60u);
    const std::int64_t index = 20'000 / 96;
    ASSERT_NE(image(index), nullptr);
    image(index)->remove();
    platform.advance(1);
    EXPECT_EQ(images().imagesArray()->size(), 499u);
    EXPECT_EQ(recordText(images().removedImagesDictionaryArray()->front(), "id"), std::to_string(index + 1));
}

TEST_F(ArticleEditTest, CaptionsOfEveryKindAreKept) {
    openExisting(articleWith(1));
    for (const std::string& caption :
         {std::string(100'000, 'w'), std::string("\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d \xe2\x80\xae"),
          std::string("e\xcc\x81\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x9a\x80"), std::string("%@ %ld \n\r\n")}) {
        typeCaption(image(0), caption);
        EXPECT_EQ(images().imagesArray()->front()->text(), caption);
    }
}

}  // namespace
}  // namespace ostrel
