// BinHex bodies as files.
#include "tests/codec/mac_file.h"
#include "tests/support/fixture.h"
#include "vel/mime.h"

namespace vel::test {
namespace {

using namespace std::string_literals;

const MacFile kFile{"a", "TEXT", "ttxt", 0, "hello", std::string(90, 'r') + "fork and more than a line of text"};
const std::string kBinhex = kFile.hqx();
constexpr const char* kHead = "MIME-Version: 1.0\r\nContent-Type: application/MAC-binhex40\r\n";

class BinhexBody : public VelTest {
  protected:
    ~BinhexBody() override { MimeFreeMessage(&pool_); }

    MimeMsg* record_of(const std::string& message, int index = 0) {
        MimeFreeMessage(&pool_);
        MimeParseMessage(file("message", message).c_str(), 1, &pool_);
        return MimeGetMsg(pool_, index);
    }

    static std::string body_of(MimeMsg* record, bool raw = false) {
        char* path = MimeGetBody(record, raw, -1);
        if (!path) return "(null)";
        const std::string text = content(path);
        MimeFreeFile(path);
        return text;
    }

    mime_msg_pool* pool_ = nullptr;
};

TEST_F(BinhexBody, becomes_an_apple_single_file_and_names_the_record) {
    MimeMsg* record = record_of(std::string(kHead) + "\r\nread me first\r\n" + kBinhex);
    record->trueName = ::strdup("before");
    EXPECT_EQ(body_of(record), kFile.apple_single());
    EXPECT_STREQ(MimeGetTrueName(record), "a");
    EXPECT_TRUE(body_of(record, true).starts_with("MIME-Version"));
    EXPECT_STREQ(MimeGetTrueName(record), "a");
    EXPECT_EQ(body_of(record_of("Subject: none\r\n\r\ntext\r\n" + kBinhex, 1)), kFile.apple_single());
}

TEST_F(BinhexBody, that_does_not_decode_is_delivered_without_a_name) {
    const std::string bad_character = std::string(kBinhex).replace(60, 1, "~");
    for (const std::string& body : {bad_character, "nothing\r\n"s, ""s, kBinhex}) {
        const char* encoding = body == kBinhex ? "Content-Transfer-Encoding: x-uue\r\n\r\n" : "\r\n";  // counts first
        MimeMsg* record = record_of(std::string(kHead) + encoding + body);
        record->trueName = ::strdup("before");
        EXPECT_EQ(body_of(record), body);
        EXPECT_STREQ(MimeGetTrueName(record), nullptr) << body;
        EXPECT_EQ(left_behind("binhex").size() + left_behind("MIME").size(), 0u) << body;
    }
}

}  // namespace
}  // namespace vel::test
