// A folder of known fonts with a fontconfig file over it, for a test to see nothing else. Make it
// before the library starts: a process reads its configuration once.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "support/scratch.h"

class PrivateFonts {
public:
    PrivateFonts()
    {
        std::filesystem::create_directory(folder_.file("fonts"));
        WriteWholeFile(
            folder_.file("fonts.conf"),
            "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM 'urn:fontconfig:fonts.dtd'>"
            "<fontconfig><dir>" +
                folder_.file("fonts") + "</dir><cachedir>" + folder_.file("cache") +
                "</cachedir></fontconfig>");
        setenv("FONTCONFIG_FILE", folder_.file("fonts.conf").c_str(), 1);
    }

    // Copies an installed font, DejaVuSans.ttf or NimbusSans-Regular.otf, under a name of its own.
    void Add(const std::string &font, const std::string &name)
    {
        std::error_code error;
        std::filesystem::copy_file(InstalledPath(font), Path(name), error);
        EXPECT_FALSE(error) << font << ": " << error.message();
    }
    void Add(const std::string &font) { Add(font, font); }

    std::string Path(const std::string &name) const { return folder_.file("fonts/" + name); }

    static std::string InstalledPath(const std::string &font)
    {
        const std::string ending = std::filesystem::path(font).extension();
        return std::string("/usr/share/fonts/") +
               (ending == ".ttf"   ? "truetype/dejavu/"
                : ending == ".otf" ? "opentype/urw-base35/"
                                   : "type1/urw-base35/") +
               font;
    }

private:
    ScratchFolder folder_;
};
