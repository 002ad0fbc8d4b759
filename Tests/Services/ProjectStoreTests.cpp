#include "Services/ProjectStore.h"

#include "Services/ErrorDescription.h"
#include "Services/ProjectJson.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include <sys/stat.h>

namespace mossbit {
namespace {

using namespace std::string_literals;

/// The error's description, or nothing where there is none.
std::string errorOf(const std::function<Project()>& read) {
    try {
        read();
    } catch (const std::exception& error) {
        return description(error);
    }
    return {};
}

/// As deep as no parser that calls itself could follow.
const std::string nested = std::string(100'000, '[') + std::string(100'000, ']');

std::string inChannel(const std::string& members) {
    return R"({"channels":[{"kind":"wave",)" + members + "}]}";
}

TEST(ProjectJson, ReadsBackWhatItWrites) {
    Project odd = song({.grid = GridDivision::quarter}).note(60, 3, 2, INT64_MIN);
    odd.version = INT64_MAX;
    for (const Project& project : {Project(), fullSong(), odd}) {
        const std::string json = ProjectStore::encode(project);
        const Project decoded = decodeProject(json);
        EXPECT_EQ(decoded, project);
        EXPECT_EQ(ProjectStore::encode(decoded), json);
    }
    // The songs among the examples show the layout of all else.
    for (const char* line : {"      \"notes\" : [],\n", "\"volume\" : 11,", "\"volume\" : 13,"})
        EXPECT_NE(ProjectStore::encode(Project()).find(line), std::string::npos) << line;
}

TEST(ProjectJson, CompletesAndClampsProjects) {
    Project mixed;
    mixed.channels[0].muted = true;
    mixed.channels[0].duty = Duty::d75;
    mixed.channels[1].volume = 0;
    mixed.channels[1].duty = Duty::d50;
    mixed.channels[2].volume = 15;
    mixed.channels[3].volume = 1;
    const std::pair<std::string, Project> cases[] = {
        {"\xEF\xBB\xBF{}\r\n\t ", {}},
        {"{\"x\":" + nested + "}", {}},
        {R"( {"tempo" : null, "bars":null,"grid":null,"loop":null,"version":null,
              "channels":null})",
         {}},
        {R"({"tempo":500,"bars":3})", {.tempo = 300}},
        {R"({"tempo":10,"bars":16.0,"version":-2e1,"grid":0.2E+1})",
         {.version = -20, .tempo = 40, .bars = 16, .grid = GridDivision::eighth}},
        {R"({"tempo":"fast","tempo":90,"t\u0065mpo":91})", {.tempo = 91}},
        {R"({"Tempo":1,"kind":2,"x":{"tempo":[{"channels":3}]},"y":[[],{}],"loop":false})",
         {.loop = false}},
        {R"({"channels":[{"kind":"noise","volume":1},{"kind":"wave","volume":99},
             {"kind":"pulse2","volume":-4,"x":[{"kind":0}]},{"kind":"pulse1","muted":true,
             "duty":3},{"kind":"pulse1","volume":3}]})",
         mixed},
    };
    for (const auto& [json, project] : cases)
        EXPECT_EQ(decodeProject(json), project) << json;
}

TEST(ProjectJson, CompletesAndClampsNotes) {
    const auto notes = [](const std::string& json) {
        return decodeProject(inChannel("\"notes\":[" + json + "]")).channels[2].notes;
    };
    const std::string json = R"({"length":0,"pitch":60,"start":3})";
    const Note first = notes(json).at(0);
    EXPECT_EQ(first, (Note{.id = first.id, .start = 3}));
    EXPECT_NE(notes(json)[0].id, first.id);
    const std::string id = "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B37";
    const std::string copied = "{\"id\":\"" + id + "\"," + json.substr(1);
    const auto twice = notes(copied + "," + copied);
    EXPECT_EQ(twice[0].id.text(), id);
    EXPECT_NE(twice[0].id, twice[1].id);
    EXPECT_EQ(notes(R"({"pitch":60,"start":60,"length":8})")[0].length, 4);
}

TEST(ProjectJson, SaysWhatIsWrongAndWhere) {
    const std::pair<std::string, const char*> cases[] = {
        {"[]", "expected an object, found a list"},
        {R"({"tempo":"120"})", "tempo: expected a whole number, found a string"},
        {R"({"tempo":120,"tempo":120.5})", "tempo: expected a whole number, found a fraction"},
        {R"({"version":9223372036854775808})",
         "version: expected a whole number, found a number that is too large"},
        {R"({"bars":1e30})", "bars: expected a whole number, found a number that is too large"},
        {"{\"channels\":" + nested + "}", "channels[0]: expected an object, found a list"},
        {R"({"loop":1})", "loop: expected true or false, found a whole number"},
        {R"({"grid":3})", "grid: expected 1, 2 or 4, found a whole number, 3"},
        {R"({"channels":[{"kind":"wave"},null]})", "channels[1]: expected an object, found null"},
        {inChannel(R"("kind":"organ")"),
         R"(channels[0].kind: expected "pulse1", "pulse2", "wave" or "noise", found a string that is none)"},
        {inChannel(R"("duty":4)"),
         "channels[0].duty: expected 0, 1, 2 or 3, found a whole number, 4"},
        {inChannel(R"("notes":[{"pitch":60,"start":0,"length":1},[]])"),
         "channels[0].notes[1]: expected an object, found a list"},
        {R"({"channels":[{"kind":"wave","notes":[{"id":"8B1F3C2E"}]}]})",
         "channels[0].notes[0].id: expected a UUID, found a string that is none"},
        // Also in a channel that would not be taken.
        {R"({"channels":[{"kind":"wave"},{"kind":"wave","notes":[{}]}]})",
         "channels[1].notes[0].pitch: missing"},
        {"", "line 1, column 1: unexpected end of input"},
        {"{}\n{}", "line 2, column 1: unexpected '{'"},
        {"{\n  \"tempo\": 1,\n  \"ä\": ]\n}", "line 3, column 8: unexpected ']'"},
        {"{\"tempo\":1,}", "line 1, column 12: unexpected '}'"},
        {"{/**/}", "line 1, column 2: unexpected '/'"},
        {"{\"x", "line 1, column 4: unexpected end of input"},
        {"{}"s + '\0' + "x", "line 1, column 3: a zero byte; this is not UTF-8 text"},
        {"\xFF\xFE{", "line 1, column 1: unexpected byte FF"},
        {"{\"x\":\"\xC3(\"}", "line 1, column 8: unexpected '('"},
        {R"({"x":"\ud800"})", "line 1, column 13: unexpected '\"'"},
        {R"({"x":1e999})", "a number is too large"},
    };
    for (const auto& [json, words] : cases)
        EXPECT_EQ(errorOf([&json = json] { return decodeProject(json); }), words) << json;
}

std::string readingError(const std::filesystem::path& url) {
    return errorOf([&] { return ProjectStore::read(url); });
}

TEST(ProjectStore, DescribesWhatCannotBeRead) {
    const ScratchFolder folder;
    putBytes(folder / "empty", "");
    putBytes(folder / "large", "{}");
    std::filesystem::resize_file(folder / "large", (4U << 20) + 1);
    // Longer once it is written with all its members.
    std::string notes = R"({"channels":[{"kind":"wave","notes":[{"pitch":60,"start":0,"length":1})";
    for (int count = 0; count < 50'000; ++count)
        notes += R"(,{"pitch":60,"start":0,"length":1})";
    putBytes(folder / "short", notes + "]}]}");
    std::filesystem::create_symlink("loop", folder / "loop");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(readingError(folder / "missing"), "No such file or directory");
    EXPECT_EQ(readingError(folder / "empty/song"), "Not a directory");
    EXPECT_EQ(readingError(folder.path()), "Is a directory");
    EXPECT_EQ(readingError(folder / "large"), "File too large");
    EXPECT_EQ(readingError(folder / "short"), "File too large");
    EXPECT_EQ(readingError(folder / "loop"), "Too many levels of symbolic links");
    EXPECT_EQ(readingError(folder / "pipe"), "It is not a regular file");
    EXPECT_EQ(readingError("/dev/zero"), "It is not a regular file");
    EXPECT_TRUE(readingError(folder / "empty").starts_with("line 1, column 1: unexpected end"));
}

} // namespace
} // namespace mossbit
