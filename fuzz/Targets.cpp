#include "Targets.h"

#include "base/ImportError.h"
#include "compile/Compiler.h"
#include "import/AssimpReader.h"
#include "import/GltfReader.h"
#include "import/ModelReader.h"
#include "import/ObjReader.h"
#include "import/PlyReader.h"
#include "import/TableReader.h"
#include "scene/Poser.h"
#include "texture/PictureDecoder.h"
#include "texture/SkyRows.h"

#include <Cg/cg.h>
#include <gl/GLFunctionTable.h>
#include <orlohost/ShadingNodeSpec.h>
#include <shader/GL2Shader.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using Bytes = std::span<const std::uint8_t>;
using Buffer = std::vector<std::uint8_t>;

void demand(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

/// Reads a model: what comes out has to hold together, also while it moves.
template <typename Read>
void readScene(Read read) {
    try {
        orloview::Scene scene = read();
        demand(orloview::isConsistent(scene), "the scene doesn't hold together");
        orloview::Poser poser(scene);
        poser.pose(0.7);
        demand(orloview::isConsistent(scene), "the scene falls apart as it moves");
    } catch (const orloview::ImportError&) {
    }
}

void readGltf(Bytes bytes) {
    readScene([&] {
        return orloview::readGltf(Buffer(bytes.begin(), bytes.end()),
                                  orloview::ModelFolder("nowhere/model.gltf"));
    });
}

void readObj(Bytes bytes) {
    readScene([&] {
        return orloview::readObj(Buffer(bytes.begin(), bytes.end()),
                                 orloview::ModelFolder("nowhere/model.obj"));
    });
}

/// A folder of this process's own.
struct Folder {
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("orlo-fuzz-" + std::to_string(getpid()));
    Folder() { std::filesystem::create_directories(path); }
    ~Folder() { std::filesystem::remove_all(path); }
};

void write(const std::filesystem::path& path, Bytes bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// A material library, by a model beside it.
void readMtl(Bytes bytes) {
    static const Folder folder;
    write(folder.path / "m.mtl", bytes);
    const std::string_view model = "mtllib m.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\nf 1 2 3\n";
    readScene([&] {
        return orloview::readObj(Buffer(model.begin(), model.end()),
                                 orloview::ModelFolder(folder.path / "model.obj"));
    });
}

void readPly(Bytes bytes) {
    readScene([&] { return orloview::readPly(Buffer(bytes.begin(), bytes.end())); });
}

void readStl(Bytes bytes) {
    readScene([&] { return orloview::readStl(Buffer(bytes.begin(), bytes.end())); });
}

void readTable(Bytes bytes) {
    readScene([&] { return orloview::readTable(Buffer(bytes.begin(), bytes.end())); });
}

void decodePicture(Bytes bytes) {
    try {
        const orloview::DecodedPicture picture(bytes);
        unsigned sum = 0;
        for (int y = 0; y < picture.height(); ++y)
            sum += picture.row(y)[picture.width() * picture.channels() - 1];
        demand(sum <= 255U * static_cast<unsigned>(picture.height()), "pixels of more than 255");
    } catch (const std::bad_alloc&) { // what it asks for is beyond the limits, and told by them
    } catch (const orloview::PictureError&) {
    }
}

void readRadiance(Bytes bytes) {
    try {
        const orloview::SkyPicture sky = orloview::readRadiance(bytes);
        demand(sky.rgb.size() ==
                       size_t{3} * static_cast<size_t>(sky.width) * static_cast<size_t>(sky.height) &&
                   std::all_of(sky.rgb.begin(), sky.rgb.end(), [](float light) { return light >= 0.0F; }),
               "a sky of more or less than its pixels, or of what is no light");
    } catch (const orloview::PictureError&) {
    }
}

void compileCg(Bytes bytes) {
    for (const orlocg::Stage stage : {orlocg::Stage::Vertex, orlocg::Stage::Fragment}) {
        orlocg::CompileOptions options;
        options.stage = stage;
        options.preprocess.read = [](const std::string&) { return std::optional<std::string>("float f;\n"); };
        std::string listing;
        const auto program =
            orlocg::compile({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, options, listing);
        demand(program || !listing.empty(), "refused without a word");
    }
}

/// Walks through an effect, and compiles a few of its programs.
void readEffect(Bytes bytes) {
    static const CGcontext context = [] {
        const CGcontext made = cgCreateContext();
        cgSetCompilerIncludeCallback(made, [](CGcontext asking, const char* name) {
            cgSetCompilerIncludeString(asking, name, "float f;\n");
        });
        return made;
    }();
    cgSetCompilerIncludeString(context, nullptr, nullptr);
    const std::string source(bytes.begin(), bytes.end());
    const CGeffect effect = cgCreateEffect(context, source.c_str(), nullptr);
    demand(effect || *cgGetLastListing(context) != 0, "refused without a word");
    if (!effect)
        return;
    int programs = 4;
    const auto walk = [&](CGstateassignment at) {
        for (; at; at = cgGetNextStateAssignment(at)) {
            int count = 0;
            cgGetFloatStateAssignmentValues(at, &count);
            cgGetTextureStateAssignmentValue(at);
            demand(cgGetStringStateAssignmentValue(at) != nullptr, "a value without a text");
            if (programs-- > 0)
                cgGetProgramStateAssignmentValue(at);
        }
    };
    for (CGtechnique technique = cgGetFirstTechnique(effect); technique;
         technique = cgGetNextTechnique(technique))
        for (CGpass pass = cgGetFirstPass(technique); pass; pass = cgGetNextPass(pass))
            walk(cgGetFirstStateAssignment(pass));
    for (CGparameter p = cgGetFirstEffectParameter(effect); p; p = cgGetNextParameter(p)) {
        walk(cgGetFirstSamplerStateAssignment(p));
        for (CGannotation a = cgGetFirstParameterAnnotation(p); a; a = cgGetNextAnnotation(a))
            cgGetStringAnnotationValue(a);
        demand(cgGetParameterEffect(p) == effect, "another effect's parameter");
    }
    while (const CGprogram program = cgGetFirstProgram(context))
        cgDestroyProgram(program);
    cgDestroyEffect(effect);
}

/// The bytes build a network: of three each, the first says what is done and to which node.
void compileNetwork(Bytes bytes) {
    using namespace koShadingDag;
    constexpr std::array<const char*, 21> kNames = {
        "uv",       "color",     "normal",   "baseColor", "metallic", "roughness", "opacity",
        "emission", "occlusion", "a",        "b",         "weight",   "height",    "position",
        "scale",    "offset",    "rotation", "red",       "alpha",    "set",       "tangentSet"};
    std::vector<std::shared_ptr<ShadingNodeSpec>> nodes = {std::make_shared<ShadingNodeSpec>(kLambert)};
    for (; bytes.size() >= 3 && nodes.size() < 64; bytes = bytes.subspan(3)) {
        const auto& node = nodes[bytes[1] % nodes.size()];
        const char* name = kNames[bytes[2] % kNames.size()];
        switch (bytes[0] % 5) {
        case 0:
            nodes.push_back(
                std::make_shared<ShadingNodeSpec>(static_cast<NodeKind>(bytes[1] % kNodeKindCount)));
            break;
        case 1: // a circle and what doesn't fit are refused
            static_cast<void>(
                node->connect(name, nodes[bytes[0] / 5 % nodes.size()], kNames[bytes[1] % kNames.size()]));
            break;
        case 2:
            node->setValue(name, static_cast<float>(bytes[0]) - 100.0F);
            break;
        case 3:
            node->setSetting(name, bytes[0] - 128);
            break;
        default:
            node->disconnect(name);
        }
    }
    const std::vector<LightSpec> lights(bytes.size() % 3);
    koString::CString vertex;
    koString::CString fragment;
    compileMaterialToGlsl(*nodes.back(), &lights, vertex, fragment);
    compileMaterialToCg(*nodes.back(), &lights, vertex, fragment);
    for (const auto& [stage, source] :
         {std::pair{orlocg::Stage::Vertex, &vertex}, {orlocg::Stage::Fragment, &fragment}}) {
        orlocg::CompileOptions options;
        options.stage = stage;
        std::string listing;
        const bool compiles = orlocg::compile(source->asChar(), options, listing) != nullptr;
        demand(compiles || nodes.size() > 16, listing.c_str());
    }
}

/// A file of a GL2 shader: the source is what stands in it. Without OpenGL it compiles to nothing.
void readShader(Bytes bytes) {
    static const Folder folder;
    std::string path = folder.path / "s.frag";
    write(path, bytes);
    GL2Shader shader(GL2Shader::kFragmentShader);
    const auto length = static_cast<size_t>(shader.readShaderSource(path.data()));
    demand(length == bytes.size() &&
               std::equal(bytes.begin(), bytes.end(), shader.fSource.get(),
                          [](auto in, char out) { return in == static_cast<std::uint8_t>(out); }),
           "the source isn't the file");
    demand(length == 0 || shader.fSource[length] == 0, "the source doesn't end");
    demand(!shader.compileShaderSource(false), "compiled by nothing");
}

void searchExtensions(Bytes bytes) {
    const Bytes::iterator comma = std::find(bytes.begin(), bytes.end(), ',');
    const std::string name(bytes.begin(), comma);
    const std::string list(comma == bytes.end() ? comma : comma + 1, bytes.end());
    isExtensionSupported(reinterpret_cast<const unsigned char*>(list.c_str()), name.c_str());
}

constexpr FuzzTarget kTargets[] = {
    {"gltf", readGltf},
    {"obj", readObj},
    {"mtl", readMtl},
    {"ply", readPly},
    {"stl", readStl},
    {"table", readTable},
    {"picture", decodePicture},
    {"radiance", readRadiance},
    {"cg", compileCg},
    {"effect", readEffect},
    {"network", compileNetwork},
    {"shader", readShader},
    {"extensions", searchExtensions},
};

} // namespace

std::span<const FuzzTarget> fuzzTargets() {
    return kTargets;
}
