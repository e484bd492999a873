#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "import/PictureSearch.h"
#include "import/Warnings.h"
#include "scene/Scene.h"

namespace orloview {

/// The materials of an OBJ file: reads its libraries and knows each material by its name.
class ObjMaterials {
public:
    /// `folder` is where libraries and pictures are looked for. Materials and textures go to the scene.
    ObjMaterials(const ModelFolder& folder, Scene& scene, Warnings& warnings);

    /// The rest of a "mtllib" line: one file name with blanks in it, or several without.
    void readLibraries(std::string_view names);

    /// The material's place in the scene; -1, with a warning, where no library has it.
    int find(const std::string& name);

private:
    void readLibrary(const std::string& name);
    int texture(const std::string& picture, bool clamp);
    void readAlpha(const std::string& alphaPicture, const std::string& colorPicture, Material& material);

    const ModelFolder& fFolder;
    PictureSearch fPictures;
    Scene& fScene;
    Warnings& fWarnings;
    std::map<std::string, int> fByName;
    std::map<std::pair<std::string, bool>, int> fTextures; ///< by the picture's name, and whether clamped
    bool fLibraryMissing = false;
};

} // namespace orloview
