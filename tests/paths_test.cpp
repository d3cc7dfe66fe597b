// The normaliser and the splitter against slow twins, and the functions around them.
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "files/path_text.h"
#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

using namespace wexelxi;

namespace {

std::vector<std::string> Pieces(const std::string &text)
{
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == '/')
            pieces.emplace_back();
        else
            pieces.back() += c;
    }
    return pieces;
}

// The twin: a list of parts, each of which stands for "/part".
std::optional<std::string> SlowNormalPath(const std::string &path, const std::string &directory)
{
    std::vector<std::string> parts;
    if (path[0] != '/')
        parts = Pieces(directory);
    if (directory.size() > 4092 && path[0] != '/')
        return std::nullopt;
    for (const std::string &piece : Pieces(path)) {
        if (piece == ".." && !parts.empty())
            parts.pop_back();
        if (piece.empty() || piece == "." || piece == "..")
            continue;
        parts.push_back(piece);
        size_t length = 0;
        for (const std::string &part : parts)
            length += 1 + part.size();
        if (length > 4095)
            return std::nullopt;
    }
    std::string form;
    for (const std::string &part : parts)
        form += part.empty() ? "" : "/" + part;
    return form.empty() || path.find_first_not_of('/') == path.npos ? form + "/" : form;
}

// The twin: the marks of the contract, found one character at a time.
std::vector<std::string> SlowSplit(const std::string &path, bool wantsDrive, bool wantsDirectory)
{
    size_t slash = std::string::npos, cursor = 0, next = 0, dot = path.size();
    std::vector<std::string> parts(4);
    for (size_t i = 0; i < path.size(); i++)
        slash = path[i] == '/' ? i : slash;
    while (next < path.size() && path[next] != ':')
        next++;
    if (wantsDrive && next < path.size() && (slash == path.npos || next < slash))
        parts[0] = path.substr(0, cursor = next + 1);
    if (wantsDirectory && slash != path.npos) {
        parts[1] = path.substr(cursor, slash + 1 - cursor);
        cursor = slash + 1;
    }
    for (size_t i = slash == path.npos ? cursor : std::max(cursor, slash); i < path.size(); i++)
        dot = path[i] == '.' ? i : dot;
    parts[2] = path.substr(cursor, dot - cursor);
    parts[3] = path.substr(dot);
    return parts;
}

TEST(PathText, AgreesWithItsTwins)
{
    static const char *const pieces[] = {
        "/", "//", ".", "..", "a", ".b", "c:", "name.ext", "/../", "/./", "...", "\xE9", ":", "\\"};
    std::mt19937 random(31);
    for (int i = 0; i < 200000; i++) {
        std::string path;
        for (size_t count = random() % 12; count > 0; count--)
            path += random() % 40 ? pieces[random() % std::size(pieces)]
                                  : std::string(random() % 4100, 'x');
        const std::string directory = i % 3   ? "/home/me"
                                      : i % 2 ? "/"
                                              : "/" + std::string(1 + random() % 4095, 'd');
        ASSERT_EQ(NormalPath(path, directory), SlowNormalPath(path, directory))
            << "[" << path << "] in [" << directory << "]";
        const PathParts parts = SplitPath(path, i & 1, i & 2);
        const std::vector<std::string> got = {std::string(parts.drive),
                                              std::string(parts.directory), std::string(parts.name),
                                              std::string(parts.extension)};
        ASSERT_EQ(got, SlowSplit(path, i & 1, i & 2)) << path;
    }
}

TEST(Paths, StartFromTheCurrentDirectoryAndFillTheBuffersGiven)
{
    ASSERT_TRUE(SetCurrentDirectory("/usr/lib"));
    char output[4096];
    char *part = nullptr;
    for (const char *form : {"/usr/lib/", "/usr/lib/a"}) {
        EXPECT_EQ(GetFullPathName(form + 9, sizeof output, output, &part), strlen(form));
        EXPECT_STREQ(output, form);
        EXPECT_EQ(part, output + 9);
    }
    // Cut, never told what it needs; and nothing is written where nothing fits.
    memset(output, '*', sizeof output);
    EXPECT_EQ(GetFilePath("/usr/lib", 7, output), 6u);
    EXPECT_EQ(std::string(output, 8), std::string("/usr/l\0*", 8));
    EXPECT_EQ(GetFullPathName("/x", 0, output, nullptr), 0u);
    EXPECT_EQ(GetFilePath("/x", 0xFFFFFFFF, output), 2u);
    EXPECT_OUTCOME(GetFilePath(nullptr, 10, output), 0u, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetFilePath("/x", 10, nullptr), 0u, ERROR_SUCCESS);

    EXPECT_OUTCOME(GetCurrentDirectory(8, output), 9u, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetCurrentDirectory(99, nullptr), 9u, ERROR_SUCCESS);
    EXPECT_STREQ(output, "/x");
    EXPECT_OUTCOME(GetCurrentDirectory(9, output), 8u, ERROR_SUCCESS);
    EXPECT_OUTCOME(SetCurrentDirectory("/usr"), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(SetCurrentDirectory("no/such"), FALSE, ERROR_FILE_NOT_FOUND);

    char drive[8], name[32], extension[8] = "*";
    splitpath("c:/a:b.c", drive, nullptr, nullptr, extension);
    EXPECT_STREQ(drive, "c:");
    EXPECT_STREQ(extension, "*");
    splitpath("c:/a:b.c", drive, output, name, extension);
    EXPECT_EQ(std::string(output) + name + extension, "/a:b.c");
}

TEST(Paths, ARelativePathNeedsADirectoryThatFits)
{
    ScratchFolder folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    char output[4096] = "same";
    mkdir("gone", 0777);
    const std::string step(200, 'd');
    for (int depth = 0; depth < 22; depth++) { // past what getcwd gives
        ASSERT_EQ(mkdir(step.c_str(), 0777), 0);
        ASSERT_EQ(chdir(step.c_str()), 0);
    }
    EXPECT_OUTCOME(GetFilePath("x", sizeof output, output), 0u, ERROR_CURRENT_DIRECTORY);
    EXPECT_STREQ(output, "same");
    EXPECT_EQ(GetFilePath("/x", sizeof output, output), 2u);

    ASSERT_EQ(chdir(folder.file("gone").c_str()), 0);
    rmdir(folder.file("gone").c_str());
    EXPECT_OUTCOME(GetFilePath("y", sizeof output, output), 2u, ERROR_CURRENT_DIRECTORY);
    EXPECT_STREQ(output, "/y");
}

} // namespace
