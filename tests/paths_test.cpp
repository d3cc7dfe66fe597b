// The normaliser and the splitter against slow twins, and the functions around them.
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "files/path_text.h"
#include "support/library.h"
#include "wexelxi.h"

using namespace wexelxi;

namespace {

// The twin: a list of parts, each of which stands for "/part".
std::optional<std::string> SlowNormalPath(std::string path, const std::string &directory)
{
    std::vector<std::string> parts;
    const auto cut = [](const std::string &text) {
        std::vector<std::string> pieces(1);
        for (const char c : text) {
            if (c == '/')
                pieces.emplace_back();
            else
                pieces.back() += c;
        }
        return pieces;
    };
    if (path.empty() || path[0] != '/') {
        if (directory.size() > 4092)
            return std::nullopt;
        parts = cut(directory);
    }
    bool anything = false;
    for (const std::string &piece : cut(path)) {
        if (piece.empty())
            continue;
        anything = true;
        if (piece == "..") {
            if (!parts.empty())
                parts.pop_back();
        } else if (piece != ".") {
            parts.push_back(piece);
            size_t length = 0;
            for (const std::string &part : parts)
                length += 1 + part.size();
            if (length > 4095)
                return std::nullopt;
        }
    }
    std::string form;
    for (const std::string &part : parts)
        form += part.empty() ? "" : "/" + part;
    return form.empty() || !anything ? form + "/" : form;
}

std::string RandomPath(std::mt19937 &random, size_t longest)
{
    static const char *const pieces[] = {
        "/", "//", ".", "..", "a", ".b", "c:", "name.ext", "/../", "/./", "...", "\xE9", ":", "\\"};
    std::string path;
    for (size_t i = random() % 12; i > 0; i--) {
        if (random() % 40 == 0)
            path += std::string(random() % longest, 'x');
        else
            path += pieces[random() % std::size(pieces)];
    }
    return path;
}

TEST(NormalPath, AgreesWithItsTwin)
{
    std::mt19937 random(31);
    for (int i = 0; i < 200000; i++) {
        const std::string path = RandomPath(random, 4100);
        const std::string directory = i % 5   ? "/home/me"
                                      : i % 2 ? "/"
                                              : "/" + RandomPath(random, 4100);
        if (directory != "/" && (directory + "/").find("//") != std::string::npos)
            continue; // no working directory looks like this
        ASSERT_EQ(NormalPath(path, directory), SlowNormalPath(path, directory))
            << "[" << path << "] in [" << directory << "]";
    }
}

TEST(SplitPath, AgreesWithItsTwinAndLosesNothing)
{
    std::mt19937 random(32);
    for (int i = 0; i < 200000; i++) {
        const std::string path = RandomPath(random, 50);
        const bool wantsDrive = random() % 2;
        const bool wantsDirectory = random() % 2;
        size_t slash = path.size(), colon = path.size(), dot = path.size();
        for (size_t c = path.size(); c-- > 0;) {
            if (path[c] == '/' && slash == path.size())
                slash = c;
            if (path[c] == ':')
                colon = c;
        }
        size_t cursor = 0;
        std::string expected[4];
        if (wantsDrive && colon < path.size() && (slash == path.size() || colon < slash)) {
            expected[0] = path.substr(0, colon + 1);
            cursor = colon + 1;
        }
        if (wantsDirectory && slash < path.size()) {
            expected[1] = path.substr(cursor, slash + 1 - cursor);
            cursor = slash + 1;
        }
        for (size_t c = slash < path.size() ? std::max(slash, cursor) : cursor; c < path.size();
             c++)
            dot = path[c] == '.' ? c : dot;
        expected[2] = path.substr(cursor, dot - cursor);
        expected[3] = path.substr(dot);
        const PathParts parts = SplitPath(path, wantsDrive, wantsDirectory);
        const std::string_view got[] = {parts.drive, parts.directory, parts.name, parts.extension};
        std::string whole;
        for (int part = 0; part < 4; part++) {
            ASSERT_EQ(got[part], expected[part]) << path << " part " << part;
            whole += got[part];
        }
        ASSERT_EQ(whole, path);
    }
}

TEST(Paths, TakesTheNormalFormFromTheCurrentDirectory)
{
    ScratchFolder folder;
    ASSERT_TRUE(SetCurrentDirectory(folder.path().c_str()));
    char here[4096];
    GetCurrentDirectory(sizeof here, here);
    const std::string home = here;
    const std::string above = home.substr(0, home.rfind('/'));
    const std::pair<const char *, std::string> rows[] = {
        {"", home + "/"},
        {".", home},
        {"a", home + "/a"},
        {"./a//b/.", home + "/a/b"},
        {"../x", above + "/x"},
        {"../../../../../../../../..", "/"},
        {"/", "/"},
        {"//usr///lib/", "/usr/lib"},
        {"/a/../b", "/b"},
        {"/..", "/"},
        {"...", home + "/..."},
        {".name/..x", home + "/.name/..x"},
        {"C:\\x", home + "/C:\\x"},
    };
    char output[4096];
    char *part = nullptr;
    for (const auto &[path, form] : rows) {
        EXPECT_EQ(GetFilePath(path, sizeof output, output), form.size()) << path;
        EXPECT_EQ(output, form);
        GetFullPathName(path, sizeof output, output, &part);
        EXPECT_EQ(part, output + form.rfind('/') + 1);
    }
    // Cut, never told what it needs; and nothing is written where nothing fits.
    memset(output, '*', sizeof output);
    EXPECT_EQ(GetFullPathName("/usr/lib", 7, output, &part), 6u);
    EXPECT_STREQ(output, "/usr/l");
    EXPECT_EQ(output[7], '*');
    part = here;
    EXPECT_EQ(GetFullPathName("/x", 0, output, &part), 0u);
    EXPECT_EQ(GetFullPathName("/x", 1, output, &part), 0u);
    EXPECT_EQ(GetFilePath(nullptr, 10, output), 0u);
    EXPECT_EQ(GetFilePath("/x", 10, nullptr), 0u);
    EXPECT_EQ(GetFilePath(("/" + std::string(4095, 'x')).c_str(), sizeof output, output), 0u);
    EXPECT_EQ(part, here);

    const auto length = static_cast<uint32_t>(home.size());
    output[0] = '*';
    EXPECT_EQ(GetCurrentDirectory(length, output), length + 1);
    EXPECT_EQ(GetCurrentDirectory(0, output), length + 1);
    EXPECT_EQ(output[0], '*');
    EXPECT_EQ(GetCurrentDirectory(length + 1, output), length);
    EXPECT_FALSE(SetCurrentDirectory("no/such"));
    EXPECT_EQ(GetLastError(), 2u);
}

TEST(Paths, ARelativePathNeedsADirectoryThatFits)
{
    ScratchFolder folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    char output[4096] = "same";
    // Down in steps, past 4092 characters and then past what getcwd gives.
    const std::string step(200, 'd');
    for (int depth = 0; depth < 22; depth++) {
        ASSERT_EQ(mkdir(step.c_str(), 0777), 0);
        ASSERT_EQ(chdir(step.c_str()), 0);
    }
    EXPECT_EQ(GetFilePath("x", sizeof output, output), 0u);
    EXPECT_EQ(GetLastError(), 16u);
    EXPECT_STREQ(output, "same");
    EXPECT_EQ(GetFilePath("/x", sizeof output, output), 2u);

    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    mkdir("gone", 0777);
    ASSERT_EQ(chdir("gone"), 0);
    rmdir("../gone");
    EXPECT_EQ(GetFilePath("x", sizeof output, output), 2u);
    EXPECT_STREQ(output, "/x");
    EXPECT_EQ(GetLastError(), 16u);
    EXPECT_EQ(GetCurrentDirectory(sizeof output, output), 0u);
}

TEST(Paths, SplitsIntoTheBuffersThatAreGiven)
{
    struct Row {
        const char *path, *drive, *directory, *name, *extension;
    };
    const Row rows[] = {
        {"c:/tmp/x.tar.gz", "c:", "/tmp/", "x.tar", ".gz"},
        {"/dir.d/file", "", "/dir.d/", "file", ""},
        {".profile", "", "", "", ".profile"},
        {"/a/b:c.d", "", "/a/", "b:c", ".d"},
        {"a.b:c", "a.b:", "", "c", ""},
        {"", "", "", "", ""},
    };
    for (const Row &row : rows) {
        char parts[4][64] = {"*", "*", "*", "*"};
        splitpath(row.path, parts[0], parts[1], parts[2], parts[3]);
        EXPECT_STREQ(parts[0], row.drive);
        EXPECT_STREQ(parts[1], row.directory);
        EXPECT_STREQ(parts[2], row.name);
        EXPECT_STREQ(parts[3], row.extension);
    }
    char name[64] = "*", extension[64] = "*";
    splitpath("c:/tmp/x.y", nullptr, nullptr, nullptr, extension);
    EXPECT_STREQ(extension, "*");
    splitpath("c:/tmp/x.y", nullptr, nullptr, name, extension);
    EXPECT_STREQ(name, "c:/tmp/x");
    EXPECT_STREQ(extension, ".y");
}

} // namespace
