// Fonts made, measured and deleted by several threads at once.
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "support/library.h"
#include "support/private_fonts.h"
#include "wexelxi.h"

namespace {

int32_t WidthBy(HFONT font, const std::string &text)
{
    const HDC hdc = CreateDC(nullptr, nullptr, nullptr, nullptr);
    SelectObject(hdc, font);
    SIZE size = {};
    GetTextExtentPoint32(hdc, text.c_str(), -1, &size);
    DeleteDC(hdc);
    return size.cx;
}

HFONT MakeFont(int32_t height)
{
    return CreateFont(height, 0, 0, 0, 400, 0, 0, 0, 0, 0, 0, 0, 0, "DejaVu Sans");
}

TEST(FontThreads, AgreeWithASingleThread)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    StartedLibrary library;
    const HFONT shared = MakeFont(11);
    std::vector<int32_t> expected;
    for (int i = 0; i < 100; i++) {
        const HFONT font = MakeFont(10 + i % 3);
        expected.push_back(WidthBy(font, std::to_string(i)) + WidthBy(shared, std::to_string(i)));
        DeleteObject(font);
    }
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++) {
        threads.emplace_back([&, t] {
            for (int step = 0; step < 200; step++) {
                const int i = (step * 7 + t * 25) % 100;
                const HFONT font = MakeFont(10 + i % 3);
                EXPECT_EQ(WidthBy(font, std::to_string(i)) + WidthBy(shared, std::to_string(i)),
                          expected[static_cast<size_t>(i)]);
                EnumFonts(
                    nullptr, "DejaVu Sans", [](auto...) { return 1; }, 0);
                DeleteObject(font);
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    DeleteObject(shared);
}

} // namespace
