// Writes the bytes of every procedural map, as they are uploaded, into files: dump_maps FOLDER. A text file
// MAPS lists name and size. procedural_maps.py computes the same bytes by itself and compares.

#include "RecordingGL.h"

#include "gl/GLFunctionTable.h"
#include "texture/TextureManager.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace {

std::string theUploaded;

/// Keeps what glTexImage1D and 2D are given, all images one after the other.
uint64_t keep(const std::vector<Argument>& arguments) {
    const bool flat = arguments.size() == 9;
    const auto format = static_cast<GLenum>(arguments[flat ? 6 : 5].integer());
    const auto texels = static_cast<size_t>(arguments[3].integer() * (flat ? arguments[4].integer() : 1));
    const size_t bytes = format == GL_RGB ? 3 : format == GL_RGBA || format == GL_HILO_NV ? 4 : 1;
    theUploaded.append(static_cast<const char*>(arguments.back().pointer()), texels * bytes);
    return 0;
}

} // namespace

int main(int, char** argv) {
    resetRecording();
    script().answers = {{"glTexImage1D", keep}, {"glTexImage2D", keep}};
    GLFunctionTable table;
    table.populate();
    GLFunctionTable::fpGlobalFunctionTable = &table;
    const auto write = [&](const std::string& name) {
        std::ofstream(std::string(argv[1]) + "/" + name, std::ios::binary) << theUploaded;
        theUploaded.clear();
    };
    TextureManager manager;
    manager.normalizationCubeMap();
    write("normalize_rgb_128");
    manager.normalizationHILOCubeMap();
    write("normalize_hilo_128");
    manager.attenDistanceMap();
    write("attenuation_128"); // distance, then exponent
    manager.atten1DMapId();
    write("atten1d");
    manager.rampTextureMap();
    write("ramp");
    manager.spotProjTextureMask();
    manager.shadowProjTextureMask();
    write("masks");
    for (const auto& [n, lo, hi] : {std::array{64, 1, 128}, {32, 2, 4}, {3, 7, -7}, {2, 0, 0}, {1, 1, 2}}) {
        generateNHKMap(n, lo, hi);
        write("nhk_" + std::to_string(n) + "_" + std::to_string(lo) + "_" + std::to_string(hi));
    }
    for (const auto& [w, h, p] : {std::array{64, 64, 30}, {16, 128, 3}, {5, 7, 200}, {4, 4, 0}, {4, 4, -2}}) {
        generateNormalizeExponentiateMap(w, h, static_cast<float>(p));
        write("normexp_" + std::to_string(w) + "_" + std::to_string(h) + "_" + std::to_string(p));
    }
    for (const int size : {1, 5}) {
        makeNormalizeVectorCubeMap(size, true);
        write("normalize_rgb_" + std::to_string(size));
        makeNormalizeVectorCubeMap(size, false);
        write("normalize_hilo_" + std::to_string(size));
        const GLAttenuationLightMap map(size);
        write("attenuation_" + std::to_string(size));
    }
    return 0;
}
