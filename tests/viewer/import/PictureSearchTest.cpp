#include "TestFiles.h"

#include "import/PictureSearch.h"

#include <sys/stat.h>

namespace orloview {
namespace {

using testing::HasSubstr;

std::string errorOf(PictureSearch& search, const std::string& name) {
    try {
        return "found " + search.find(name);
    } catch (const ImportError& error) {
        return error.what();
    }
}

TEST(PictureSearch, findsWhatWasNamedOnAnotherMachine) {
    const Folder folder;
    for (const char* sub : {"model", "model/Maps", "model/skin", "textures", "model/folder.png"})
        std::filesystem::create_directory(folder.path() / sub);
    for (const char* file : {"model/Wood.JPG", "model/exact.png", "model/EXACT.png", "model/Maps/stone.png",
                             "model/skin/face.png", "textures/bark.png", "far.png"})
        folder.write(file, bytesOf("x"));
    mkfifo((folder.path() / "model/pipe.png").c_str(), 0600);
    const std::pair<std::string, const char*> kNames[] = {
        {"exact.png", "model/exact.png"},
        {"EXACT.png", "model/EXACT.png"},
        {"wood.jpg", "model/Wood.JPG"},
        {".\\WOOD.jpg", "model/Wood.JPG"},
        {"maps\\STONE.PNG", "model/Maps/stone.png"},
        {"stone.png", "model/Maps/stone.png"},
        {"C:\\Users\\Ann Example\\work\\wood.jpg", "model/Wood.JPG"},
        {"/home/ann/skin/face.png", "model/skin/face.png"},
        {"file:///home/ann/face/skin/FACE.PNG", "model/skin/face.png"},
        {"D:/assets/textures/bark.png", "textures/bark.png"},
        {"bark.png", "textures/bark.png"},
        {"..\\Far.PNG", "far.png"},
        {(folder.path() / "far.png").string(), "far.png"},
    };
    PictureSearch search(ModelFolder(folder.path() / "model/a.obj"));
    for (const auto& [name, file] : kNames) {
        const std::string found = errorOf(search, name);
        EXPECT_TRUE(found.starts_with("found ") &&
                    std::filesystem::equivalent(found.substr(6), folder.path() / file))
            << name << ": " << found;
    }
    for (const char* name : {"gone.png", "folder.png", "", ".", "..", "/", "Maps", "exact.png/"})
        EXPECT_EQ(errorOf(search, name), "there is no such file") << name;
    const Folder outside;
    EXPECT_THAT(errorOf(search, outside.write("far.jpg", bytesOf("x")).string()), HasSubstr("outside"));
    EXPECT_THAT(errorOf(search, "pipe.png"), HasSubstr("a pipe"));
    EXPECT_THAT(errorOf(search, "https://example.org/wood.jpg"), HasSubstr("save it beside the model"));
}

} // namespace
} // namespace orloview
