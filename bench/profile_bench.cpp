// Profiles and preferences, beside key-file libraries.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <glib.h>
#include <string>
#include <unistd.h>
#ifdef HAVE_INIPARSER
#include <iniparser.h>
#endif

#include "host.h"
#include "rows.h"

namespace {

constexpr int kKeysInASection = 10;

std::string SectionOf(int key)
{
    return "section" + std::to_string(key / kKeysInASection);
}

std::string NameOf(int key)
{
    return "key" + std::to_string(key);
}

std::string TextOf(int keys, bool oneSection)
{
    std::string text;
    for (int key = 0; key < keys; key++) {
        if (oneSection ? key == 0 : key % kKeysInASection == 0)
            text += "[" + SectionOf(key) + "]\r\n";
        text += NameOf(key) + "=" + std::string(20, 'v') + "\r\n";
    }
    return text;
}

Work Read(const std::string &section, const std::string &key, const std::string &file)
{
    return Ours([=] {
        char value[64];
        Keep(GetPrivateProfileString(section.c_str(), key.c_str(), "", value, sizeof value,
                                     file.c_str()));
    });
}

// A scan cannot do without one look at the text before the key.
Work Memchr(const std::string &text, size_t bytes)
{
    return Do("memchr up to it", [&text, bytes] { Keep(memchr(text.data(), '\x01', bytes)); });
}

void KeyRows(const std::string &folder, int keys)
{
    const std::string file = folder + "/" + std::to_string(keys) + ".ini";
    const std::string text = TextOf(keys, false);
    WriteWholeFile(file, text);
    GKeyFile *glib = g_key_file_new();
    g_key_file_load_from_file(glib, file.c_str(), G_KEY_FILE_NONE, nullptr);
#ifdef HAVE_INIPARSER
    dictionary *parsed = iniparser_load(file.c_str());
#endif
    const struct {
        const char *which;
        int key;
    } rows[] = {{"first", 0}, {"middle", keys / 2}, {"last", keys - 1}, {"absent", keys}};
    for (const auto &row : rows) {
        const std::string section = SectionOf(std::min(row.key, keys - 1)), name = NameOf(row.key);
        const size_t offset = std::min(text.find("\n" + name + "="), text.size());
        std::vector<Work> peers = {Do("GLib GKeyFile", [=] {
            g_free(g_key_file_get_string(glib, section.c_str(), name.c_str(), nullptr));
        })};
#ifdef HAVE_INIPARSER
        const std::string path = section + ":" + name;
        peers.push_back(
            Do("iniparser", [=] { Keep(iniparser_getstring(parsed, path.c_str(), "")); }));
#endif
        Row("cached key of " + std::to_string(keys) + ", " + row.which,
            "lock, one question about the file, the index", Read(section, name, file),
            Memchr(text, offset), peers);
    }
    g_key_file_free(glib);
#ifdef HAVE_INIPARSER
    iniparser_freedict(parsed);
#endif
}

void GrowthRows(const std::string &folder)
{
    const std::string few = folder + "/few.ini", many = folder + "/many.ini";
    WriteWholeFile(few, TextOf(10, true));
    WriteWholeFile(many, TextOf(20000, true));
    std::string file = few, key = NameOf(9); // one file is cached at a time
    GrowthOf last("last cached key of a section", "10 keys", Ours([&] {
                      char value[64];
                      Keep(GetPrivateProfileString("section0", key.c_str(), "", value, sizeof value,
                                                   file.c_str()));
                  }));
    file = many;
    key = NameOf(19999);
    last.Then("20,000 keys");
}

void PreferenceRows(const Host &host)
{
    const std::string file = host.folder.file("wexelxi.ini");
    gLoadPref();
    std::string text = ReadWholeFile(file);
    const Work load = Ours([] {
        TermIni();
        gFreePref();
        gLoadPref();
    });
    const Work read = Do("reading the file", [&] { Keep(ReadWholeFile(file)); });
    const Work glib = Do("GLib GKeyFile, 203 reads", [&] {
        GKeyFile *keys = g_key_file_new();
        g_key_file_load_from_file(keys, file.c_str(), G_KEY_FILE_NONE, nullptr);
        for (int i = 0; i < 203; i++)
            g_free(g_key_file_get_string(keys, "Setup", "XPrinterMargin", nullptr));
        g_key_file_free(keys);
    });
    Row("preferences, later run", "203 look-ups in one text", load, read, {glib});
    Row("preferences, first run", "one file written beside and renamed", Ours([&] {
            unlink(file.c_str());
            TermIni();
            gFreePref();
            gLoadPref();
        }),
        Do("unlinking and writing the file", [&] {
            unlink(file.c_str());
            WriteWholeFile(file, text);
        }));
    Row("WriteProfileString of one key", "lock of the file, one file written and renamed",
        Ours([] { WriteProfileString("Setup", "Counter", "12345"); }),
        Do("writing and renaming", [&] {
            WriteWholeFile(file + ".new", text);
            rename((file + ".new").c_str(), file.c_str());
        }));
}

} // namespace

int main()
{
    const Host host;
    KeyRows(host.folder.path(), 200);
    KeyRows(host.folder.path(), 20000);
    GrowthRows(host.folder.path());
    PreferenceRows(host);
}
