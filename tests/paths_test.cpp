// The normaliser and the splitter, and the functions around them.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "files/path_text.h"
#include "support/digest.h"
#include "support/last_error.h"
#include "support/library.h"
#include "support/random_text.h"
#include "wexelxi.h"

using namespace wexelxi;

namespace {

TEST(Paths, AnswerASweepAsJudged)
{
    std::mt19937 random(31);
    Digest digest;
    for (int i = 0; i < 30000; i++) {
        std::string path =
            RandomText(random, "/|//|.|..|a|.b|c:|name.ext|/../|/./|...|\xE9|:|\\", 12);
        std::string directory = i % 3 ? "/home/me" : "/";
        if (i % 16 == 0)
            path.append(4000 + random() % 110, 'x');
        if (i % 6 == 0)
            directory.append(4080 + random() % 16, 'd');
        const PathParts parts = SplitPath(path, i & 1, i & 2);
        digest.Add(NormalPath(path, directory).value_or("none"), parts.drive, parts.directory,
                   parts.name, parts.extension);
    }
    EXPECT_EQ(digest.hex(), "b98d3c64d852647b");
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
    part = nullptr;
    EXPECT_OUTCOME(GetFullPathName("/x", 0, output, &part), 0u, ERROR_SUCCESS);
    EXPECT_EQ(part, nullptr);
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
