// Fonts made, measured and deleted by several threads at once.
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "support/library.h"
#include "support/private_fonts.h"
#include "wexelxi.h"

namespace {

TEST(FontThreads, AgreeWithASingleThread)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    StartedLibrary library;
    const LOGFONT asked[] = {Asked("DejaVu Sans", 10), Asked("DejaVu Sans", 11)};
    const HFONT shared = CreateFontIndirect(&asked[0]);
    const auto widths = [&] {
        std::vector<int32_t> all;
        for (int i = 0; i < 300; i++) {
            const HFONT font = CreateFontIndirect(&asked[i % 2]);
            const std::string text = std::to_string(i % 100);
            all.push_back(WidthBy(font, text.c_str()) * 1000 + WidthBy(shared, text.c_str()));
            DeleteObject(font);
            EnumFonts(
                nullptr, "DejaVu Sans", [](auto...) { return 1; }, 0);
        }
        return all;
    };
    const std::vector<int32_t> expected = widths();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++)
        threads.emplace_back([&] { EXPECT_EQ(widths(), expected); });
    for (auto &thread : threads)
        thread.join();
}

} // namespace
