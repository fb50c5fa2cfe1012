#include "platform/host/path_names.h"

#include <filesystem>
#include <fstream>

#include "platform/host/posix_file_system.h"
#include "support/commands.h"

namespace {

using platform::host::LocaleText;
using platform::host::PathNames;
using platform::host::PosixFileSystem;

struct NameCase {
    const char* why;
    const char* name;
    const char* path;
};

// clang-format off
const NameCase kNameCases[] = {
    // why                               name                              path with drives below /root
    {"drive",                            "C:\\ZELMO\\cap1.wmv",            "/root/ZELMO/cap1.wmv"},
    {"drive with slashes",               "d:/clips/a.avi",                 "/root/clips/a.avi"},
    {"drive without separator",          "C:foo.avi",                      "/root/foo.avi"},
    {"drive alone",                      "C:",                             "/root"},
    {"drive's root",                     "C:\\",                           "/root"},
    {"drives are not climbed out of",    "C:\\..\\..\\etc\\x",             "/root/etc/x"},
    {"long-name prefix",                 "\\\\?\\C:\\a.avi",               "/root/a.avi"},
    {"share",                            "\\\\server\\films\\a.avi",       "/root/server/films/a.avi"},
    {"two letters are no drive",         "/ab:/c",                         "/ab:/c"},
    {"host path",                        "/clips/a.avi",                   "/clips/a.avi"},
    {"backslashes separate",             "/clips\\sub\\a.avi",             "/clips/sub/a.avi"},
    {"backslash in front",               "\\clips\\a.avi",                 "/clips/a.avi"},
    {"dots and repeated separators",     "/a//./b/../c\\\\d/",             "/a/c/d"},
    {"above the root",                   "/../../a",                       "/a"},
    {"home sign is a character",         "/a/~/b",                         "/a/~/b"},
    {"URI",                              "file:///clips/my%20clip.avi",    "/clips/my clip.avi"},
    {"URI, upper case, local host",      "FILE://LocalHost/a%2Fb",         "/a/b"},
    {"URI without a server",             "file:/clips/a.avi",              "/clips/a.avi"},
    {"URI with a drive",                 "file:///C:/my%20clips/a.avi",    "/root/my clips/a.avi"},
    {"URI with a drive for a server",    "file://C:/a.avi",                "/root/a.avi"},
    {"URI of a share",                   "file://server/films/a.avi",      "/root/server/films/a.avi"},
    {"URI keeps a backslash",            "file:///clips/a%5Cb.avi",        "/clips/a\\b.avi"},
    {"broken escapes stay",              "file:///a%zz%4",                 "/a%zz%4"},
    {"escapes outside URIs stay",        "/a%20b",                         "/a%20b"},
    {"other schemes are names",          "/http://x",                      "/http:/x"},
};
// clang-format on

TEST(PathNames, SpellingsLeadToHostPaths) {
    const PathNames names("/root");
    for (const NameCase& row : kNameCases)
        EXPECT_EQ(names.AbsolutePath(row.name), row.path) << row.why;
}

TEST(PathNames, RelativeNamesStartAtTheWorkingFolder) {
    const PathNames names("/root");
    const std::filesystem::path here = std::filesystem::current_path();
    EXPECT_EQ(names.AbsolutePath("a\\b.avi"), here / "a/b.avi");
    EXPECT_EQ(names.AbsolutePath("."), here);
    EXPECT_EQ(names.AbsolutePath(""), here);
    EXPECT_EQ(names.AbsolutePath("..\\b.avi"), here.parent_path() / "b.avi");
    EXPECT_EQ(names.HostName("..\\.\\b.avi"), "../b.avi");
}

TEST(PathNames, WhatExistsAsSpeltIsReached) {
    const test_support::TempFolder folder;
    const PathNames names("/root");
    const std::string file = folder / "we\\ird.avi";
    std::ofstream(file) << "x";
    std::filesystem::create_directory(folder / "odd\\dir");

    EXPECT_EQ(names.AbsolutePath(file), file);
    // A new name below a folder whose own name holds a backslash.
    EXPECT_EQ(names.AbsolutePath(folder / "odd\\dir/new\\a.wmv"), folder / "odd\\dir/new/a.wmv");
    EXPECT_EQ(names.AbsolutePath(folder / "un\\known.avi"), folder / "un/known.avi");
}

TEST(PathNames, DriveRootComesFromTheEnvironment) {
    const test_support::TempFolder folder;
    const char* home = std::getenv("HOME");
    const std::string saved_home = home != nullptr ? home : "";
    ::setenv("HOME", "/home/someone", 1);
    ::unsetenv("TESSIVO_DRIVE_ROOT");
    EXPECT_EQ(PathNames::OfUser().AbsolutePath("C:\\a"), "/home/someone/a");
    ::setenv("TESSIVO_DRIVE_ROOT", folder.path().c_str(), 1);
    EXPECT_EQ(PathNames::OfUser().AbsolutePath("C:\\a"), folder / "a");
    ::setenv("TESSIVO_DRIVE_ROOT", "/", 1);
    EXPECT_EQ(PathNames::OfUser().AbsolutePath("C:\\a"), "/a");
    ::unsetenv("TESSIVO_DRIVE_ROOT");
    ::setenv("HOME", saved_home.c_str(), 1);
}

struct PartsCase {
    const char* path;
    const char* parent;
    const char* base;
    const char* extension;
};

// clang-format off
const PartsCase kPartsCases[] = {
    // path                    parent           base      extension
    {"/clips/x.y.avi",         "/clips",        "x.y",    "avi"},
    {"C:\\ZELMO\\cap1.wmv",    "/root/ZELMO",   "cap1",   "wmv"},
    {"clip.",                  "",              "clip",   ""},
    {"sub/clip",               "sub",           "clip",   ""},
    {"/clip.avi",              "/",             "clip",   "avi"},
    {"/",                      "",              "",       ""},
    {"/a.b/clip",              "/a.b",          "clip",   ""},
    {"/clips/.hidden",         "/clips",        "",       "hidden"},
    {"..",                     "",              "..",     ""},
};
// clang-format on

TEST(PosixFileSystem, TakesNamesApart) {
    PosixFileSystem files(PathNames("/root"), LocaleText("UTF-8"));
    for (const PartsCase& row : kPartsCases) {
        EXPECT_EQ(files.GetParentFolderName(row.path), row.parent) << row.path;
        EXPECT_EQ(files.GetBaseName(row.path), row.base) << row.path;
        EXPECT_EQ(files.GetExtensionName(row.path), row.extension) << row.path;
    }
}

}  // namespace
