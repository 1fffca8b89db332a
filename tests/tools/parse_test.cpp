// vel parse: what it prints of a message, and how it gets at what the library refuses.
#include <nlohmann/json.hpp>

#include "tests/tools/run_vel.h"

namespace vel::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;

class ParseVerbTest : public CommandTest {};

TEST_F(ParseVerbTest, PrintsAMessageAsOneLineOfJson) {
    const std::string message = multipart({
        "Content-Type: text/plain; charset=\"x\"\nContent-Disposition: inline\nContent-Description: caf\xe9\n\none",
        "Content-Type: message/rfc822\nContent-ID: <a@b>\n\nMIME-Version: 1.1\n\ntwo",
    });
    const Ended ended = run({"parse", "--json", file("m.eml", message)});
    EXPECT_EQ(ended.exit, 0);
    EXPECT_THAT(ended.err, IsEmpty());
    const std::string head = "{\"file\":\"" + (directory() / "m.eml").string() + "\",";
    EXPECT_EQ(
        ended.out,
        head + R"("mime":true,"normalized":false,"fallback":null,"removed":[],)"
               R"("messages":[{"level":6,"text":"Found multipart/mixed"},)"
               R"({"level":6,"text":"boundary=b"},{"level":6,"text":"Found text/plain"},)"
               R"({"level":6,"text":"charset=\"x\""},{"level":6,"text":"Found message/rfc822"}],)"
               R"("count":4,"leaves":2,"multiparts":2,"uncovered":[],"parts":[)"
               R"({"index":0,"parent":null,"depth":0,"kind":1,"mime_version":1.0,"type":"multipart","subtype":"mixed",)"
               R"("encoding":null,"disposition":null,"id":null,"description":null,"params":["boundary=b"],)"
               R"("disposition_params":[],"boundary":"--b","header_start":0,"body_start":79,"body_end":275,)"
               R"("children":[1,2],"decoded":{"name":null,"description":null}},)"
               R"({"index":1,"parent":0,"depth":1,"kind":2,"mime_version":null,"type":"text","subtype":"plain",)"
               R"("encoding":null,"disposition":"inline\r\n","id":null,"description":"caf\uf7e9",)"
               R"("params":["charset=\"x\""],"disposition_params":[],"boundary":null,"header_start":84,)"
               R"("body_start":181,"body_end":186,"children":[],)"
               R"("decoded":{"name":null,"description":{"text":"caf\uf7e9","converted":false}}},)"
               R"({"index":2,"parent":0,"depth":1,"kind":1,"mime_version":null,"type":"message","subtype":"rfc822",)"
               R"("encoding":null,"disposition":null,"id":"<a@b>","description":null,"params":[],)"
               R"("disposition_params":[],"boundary":"--b","header_start":191,"body_start":242,"body_end":268,)"
               R"("children":[3],"decoded":{"name":null,"description":null}},)"
               R"({"index":3,"parent":2,"depth":2,"kind":2,"mime_version":1.1,"type":null,"subtype":null,)"
               R"("encoding":null,"disposition":null,"id":null,"description":null,"params":[],)"
               R"("disposition_params":[],"boundary":null,"header_start":242,"body_start":263,"body_end":268,)"
               R"("children":[],"decoded":{"name":null,"description":null}}]})"
               "\n");
}

TEST_F(ParseVerbTest, DrawsTheTree) {
    const Ended ended = run({"parse", sample("quarterly-report.eml"), "--no-nested"});
    EXPECT_EQ(ended.exit, 0);
    EXPECT_THAT(ended.err, IsEmpty());
    EXPECT_EQ(ended.out, sample("quarterly-report.eml") +
                             ": MIME, 7 entities, 5 leaves\n"
                             "part  type                       encoding          header       body  size  name\n"
                             "   0  multipart/mixed            -                      0   637-2761  2124  -\n"
                             "   1  |-- multipart/alternative  -                    653   715-1509   794  -\n"
                             "   2  |   |-- text/plain         quoted-printable     729   851-1096   245  -\n"
                             "   3  |   `-- text/html          quoted-printable    1110  1197-1493   296  -\n"
                             "   4  |-- image/png              base64              1527  1746-1934   188  regions.png\n"
                             "   5  |-- text/csv               base64              1950  2122-2272   150  regions "
                             "q3.csv\n"
                             "   6  `-- message/rfc822         -                   2288  2373-2743   370  -\n");
}

struct Reading {
    std::string name, message;
    int exit;
    bool mime, normalized;
    Json fallback;
    int count;
};

// The library refuses or misreads these; an operator gets at the content all the same.
TEST_F(ParseVerbTest, ReadsWhatTheLibraryRefuses) {
    const std::string bad_id = "Content-ID: a@b\nContent-Type: text/html\n\n";
    const std::vector<Reading> rows{
        {"plain", crlf("Subject: x\n\nbody\n"), 0, false, false, {}, 1},
        {"empty", "", 0, false, false, {}, 1},
        {"bare LF", kMimeHead + "\nbody\n", 0, true, true, {}, 1},
        {"CR LF header, bare LF in the body", crlf(kMimeHead + "\n") + "body\n", 0, true, false, {}, 1},
        {"blank parameter", crlf(kMimeHead + "Content-Type: text/plain; charset=; name=\"a;b\"\n\nbody"), kBadData,
         true, false, "lenient", 1},
        {"token with an equals sign", crlf(kMimeHead + "Content-Type: text/plain; name=a=b\n\nbody"), kBadData, true,
         false, "lenient", 1},
        {"parameter without a value", multipart({"Content-Type: text/plain; x\n\none"}), kBadData, true, false,
         "repaired", 2},
        {"bad fields in two parts", multipart({bad_id + "one", "Content-Disposition: \n\ntwo", bad_id + "three"}),
         kBadData, true, false, "repaired", 4},
        {"bad field and bare LF", kMimeHead + "Content-ID: a@b\n\nbody\n", kBadData, true, true, "repaired", 1},
        {"no boundary", crlf(kMimeHead + "Content-Type: multipart/mixed\n\nbody"), kBadData, true, false, "repaired",
         1},
        {"header cut off", crlf(kMimeHead + "Content-Type: text/html; x"), kBadData, true, false, "repaired", 1},
        {"bad field behind an odd delimiter", multipart({"\none\n--b junk\nContent-ID: x\n\ntwo"}), kBadData, true,
         false, "repaired", 3},
        {"version that is not a number", crlf("MIME-Version: 1.0\nMIME-Version: x\n\nbody"), kBadData, true, false,
         "repaired", 1},
    };
    for (const Reading& row : rows) {
        const Ended ended = run({"parse", "--json", "-"}, row.message);
        EXPECT_EQ(ended.exit, row.exit) << row.name;
        ASSERT_TRUE(Json::accept(ended.out)) << row.name << ": " << ended.out << ended.err;
        const Json json = Json::parse(ended.out);
        EXPECT_EQ(json["file"], "-");
        EXPECT_EQ(json["mime"], row.mime) << row.name;
        EXPECT_EQ(json["normalized"], row.normalized) << row.name;
        EXPECT_EQ(json["fallback"], row.fallback) << row.name;
        EXPECT_EQ(json["count"], row.count) << row.name;
        EXPECT_EQ(json["parts"].size(), static_cast<std::size_t>(row.count)) << row.name;
        EXPECT_EQ(ended.err.empty(), row.exit == 0 && !row.normalized) << row.name << ": " << ended.err;
    }
}

TEST_F(ParseVerbTest, SaysWhyAMessageWasRefused) {
    const Ended ended = run({"parse", sample("refused-field.eml")});
    const std::string start = "vel: " + sample("refused-field.eml") + ": ";
    EXPECT_EQ(ended.err, start + "\"content-id:\" field invalid.\n" +                   //
                             start + "ParseMimeMessage: not a valid MIME message.\n" +  //
                             start +
                             "refused; read from a copy without Content-ID (line 15); offsets are those of the copy\n");
    EXPECT_THAT(run({"parse", "-v", sample("quarterly-report.eml")}).err, HasSubstr("Found image/png\n"));
}

TEST_F(ParseVerbTest, ReadsWhatIsRefusedAsGentlyAsItCan) {
    const std::string gentle = crlf(kMimeHead + "Content-Type: text/plain; charset=; name=\"a;b\"\n\n");
    const Json json = Json::parse(run({"parse", "--json", "-"}, gentle).out);
    EXPECT_EQ(json["fallback"], "lenient");
    EXPECT_EQ(json["parts"][0]["params"][1], "name=\"a;b\"") << "the grammar that cuts quoted values comes last";
    EXPECT_EQ(run({"headers", "--part", "1", "-"}, multipart({"Content-ID: x\n\none"})).exit, kBadData);
    EXPECT_EQ(run({"headers", "-v", "-"}, "A: b\r\n\r\n").exit, kUsage) << "would do nothing without --part";
}

TEST_F(ParseVerbTest, ManyPartsAndDeepNestingTakeTimeInProportion) {
    constexpr int kParts = 70000;  // more than a record lists as its children
    std::string many = crlf(kMimeHead + "Content-Type: multipart/mixed; boundary=b\n\n");
    for (int i = 0; i < kParts; ++i) many += "--b\r\n\r\nx\r\n";
    const std::string drawn = run({"parse", file("many.eml", many + "--b--\r\n")}).out;
    EXPECT_THAT(drawn, HasSubstr("MIME, 70001 entities, 70000 leaves\n"));
    EXPECT_THAT(drawn, HasSubstr("\n69999  |-- text/plain "));
    EXPECT_THAT(drawn, HasSubstr("\n70000  `-- text/plain "));
    constexpr int kDepth = 10000;
    std::string deep = crlf(kMimeHead);
    for (int i = 0; i < kDepth; ++i) {
        const std::string boundary = std::to_string(i) + "b";
        deep += "Content-Type: multipart/mixed; boundary=" + boundary + "\r\n\r\n--" + boundary + "\r\n";
    }
    const Ended ended = run({"parse", file("deep.eml", deep + "\r\nlost")});
    EXPECT_EQ(ended.exit, 0);
    EXPECT_THAT(ended.out, HasSubstr("(depth " + std::to_string(kDepth - 1) + ") multipart/mixed"));
    EXPECT_THAT(ended.out, HasSubstr("uncovered: "));
    EXPECT_LT(ended.out.size(), 300u * kDepth);
}

}  // namespace
}  // namespace vel::test
