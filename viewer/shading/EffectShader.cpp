#include "shading/EffectShader.h"

#include "base/ExitCode.h"
#include "draw/GL.h"
#include "scene/Vectors.h"
#include "shading/CgLanguage.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace orloview {

namespace {

/// The files that a text includes by names in quotes.
std::vector<std::string> includedIn(const std::string& text) {
    std::vector<std::string> names;
    constexpr std::string_view kWord = "include";
    for (size_t at = text.find(kWord); at != std::string::npos; at = text.find(kWord, at + 1)) {
        const size_t first = text.find_first_not_of(" \t", at + kWord.size());
        const size_t last = first == std::string::npos ? first : text.find_first_of("\"\n", first + 1);
        if (last != std::string::npos && text[first] == '"' && text[last] == '"')
            names.push_back(text.substr(first + 1, last - first - 1));
    }
    return names;
}

/// The text of an effect and of what it includes from beside it, as far as that is of interest here.
std::string textOf(const std::filesystem::path& file, int depth = 0) {
    constexpr int kDeepest = 3;
    constexpr size_t kMostFiles = 32;
    constexpr std::streamsize kLongest = 1 << 19;
    std::error_code none;
    if (!std::filesystem::is_regular_file(file, none))
        return {};
    std::string text(kLongest, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(text.data(), kLongest);
    text.resize(static_cast<size_t>(stream.gcount()));
    std::vector<std::string> names = includedIn(text);
    names.resize(depth < kDeepest ? std::min(names.size(), kMostFiles >> (2 * depth)) : 0);
    for (const std::string& name : names)
        text += textOf(file.parent_path() / name, depth + 1);
    return text;
}

std::string inSmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool holdsOneOf(const std::string& text, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char* word) { return text.find(word) != std::string::npos; });
}

void forgetErrors() {
    while (F_cgGetError() != CG_NO_ERROR) {
    }
}

EffectCalls neededCalls() {
    const CgSupport cg = findCg();
    const EffectCalls calls = cg.fault.empty() ? findEffectCalls() : EffectCalls();
    if (!cg.fault.empty() || !calls.areThere)
        throw Failure(
            kExitNoGL,
            "--cgfx: " + (cg.fault.empty() ? "this Cg runtime knows nothing of effects" : cg.fault) +
                "; leave it out");
    return calls;
}

/// By elimination; the identity where there is none.
koLinear::ProjMatrix inverseOf(koLinear::ProjMatrix m) {
    koLinear::ProjMatrix result;
    const auto add = [&](int to, int from, double factor) {
        for (int column = 0; column < 4; ++column) {
            m[to][column] += factor * m[from][column];
            result[to][column] += factor * result[from][column];
        }
    };
    for (int k = 0; k < 4; ++k) {
        int pivot = k;
        for (int row = k + 1; row < 4; ++row)
            pivot = std::abs(m[row][k]) > std::abs(m[pivot][k]) ? row : pivot;
        if (m[pivot][k] == 0.0)
            return {};
        if (pivot != k) {
            std::swap_ranges(m[k], m[k] + 4, m[pivot]);
            std::swap_ranges(result[k], result[k] + 4, result[pivot]);
        }
        add(k, k, 1.0 / m[k][k] - 1.0);
        for (int row = 0; row < 4; ++row)
            if (row != k)
                add(row, k, -m[row][k]);
    }
    return result;
}

/// What the runtime says of an error.
std::string reasonOf(CGerror error) {
    const bool hasListing = error == CG_COMPILER_ERROR || error == CG_PROGRAM_LOAD_ERROR;
    return (error == CG_COMPILER_ERROR ? "there is an error in it" : F_cgGetErrorString(error)) +
           (hasListing ? cgListing() : "");
}

bool isZero(CGparameter parameter) {
    int count = 0;
    const double* values = F_cgGetParameterValues(parameter, CG_DEFAULT, &count);
    return std::all_of(values, values + (values ? count : 0), [](double value) { return value == 0.0; });
}

} // namespace

EffectShader::EffectShader(const CgRequest& request, const Scene& scene, SceneLights& lights, float exposure)
    : fRequest(request), fLights(lights), fExposure(exposure), fMiddle(centerOf(scene.bounds())),
      fFar(100.0 * radiusOf(scene.bounds())), fCg(neededCalls()), fStore(fPictures) {
    read();
    chooseTechnique();
    addParameters();
    for (const CgRequest::Value& value : request.values)
        setValue(value);
    fStore.ask({1.0F, 1.0F, 1.0F}, [this](GLTexture2D* texture) { fWhite = texture; });
    fStore.ask({0.5F, 0.5F, 1.0F}, [this](GLTexture2D* texture) { fFlat = texture; });
    fStore.begin();
    fStore.upload([] {});
}

EffectShader::~EffectShader() {
    fCg.cgDestroyEffect(fEffect);
}

void EffectShader::read() {
    const std::string asked = "--cgfx " + fRequest.name + ": ";
    std::error_code none;
    if (!std::filesystem::is_regular_file(fRequest.name, none) || !std::ifstream(fRequest.name))
        throw Failure(kExitUsage, asked + "it can't be read");
    const CGcontext context = *CGcontextSingleton::theCgContext();
    fCg.cgGLRegisterStates(context);
    std::vector<const char*> switches;
    switches.reserve(fRequest.options.size() + 1);
    for (const std::string& option : fRequest.options)
        switches.push_back(option.c_str());
    switches.push_back(nullptr);
    forgetErrors();
    fEffect = fCg.cgCreateEffectFromFile(context, fRequest.name.c_str(), switches.data());
    if (!fEffect)
        throw Failure(kExitUsage, asked + reasonOf(F_cgGetError()));
}

/// What can't be in it, for people; empty: it can be used.
std::string EffectShader::faultOf(CGtechnique technique) const {
    forgetErrors();
    if (fCg.cgValidateTechnique(technique) != CG_FALSE)
        return fCg.cgGetFirstPass(technique) ? "" : "it has no passes";
    for (CGpass pass = fCg.cgGetFirstPass(technique); pass; pass = fCg.cgGetNextPass(pass))
        for (CGstateassignment a = fCg.cgGetFirstStateAssignment(pass); a;
             a = fCg.cgGetNextStateAssignment(a)) {
            forgetErrors();
            if (fCg.cgCallStateValidateCallback(a) != CG_FALSE)
                continue;
            const std::string state = fCg.cgGetStateName(fCg.cgGetStateAssignmentState(a));
            const CGerror error = F_cgGetError();
            forgetErrors();
            return "its state '" + state + "' can't be set" +
                   (error == CG_NO_ERROR ? "" : ": " + reasonOf(error));
        }
    return "its states can't be set";
}

void EffectShader::chooseTechnique() {
    const std::string& name = fRequest.technique;
    std::vector<std::string> names;
    for (CGtechnique each = fCg.cgGetFirstTechnique(fEffect); each; each = fCg.cgGetNextTechnique(each))
        names.emplace_back(fCg.cgGetTechniqueName(each));
    CGtechnique at =
        name.empty() ? fCg.cgGetFirstTechnique(fEffect) : fCg.cgGetNamedTechnique(fEffect, name.c_str());
    if (!at)
        throw Failure(kExitUsage,
                      name.empty() ? "--cgfx " + fRequest.name + ": there are no techniques in it"
                                   : "--technique " + name + ": " + fRequest.name +
                                         " has no such technique; its techniques: " + commaSeparated(names));
    for (; at; at = fCg.cgGetNextTechnique(at)) {
        const std::string fault = faultOf(at);
        if (fault.empty())
            break;
        fNotes.push_back(fRequest.name + ": the technique '" + fCg.cgGetTechniqueName(at) +
                         "' can't be used: " + fault);
    }
    fTechnique = at;
    if (at)
        return;
    std::string all = "--cgfx: none of the techniques can be used";
    for (const std::string& note : fNotes)
        all.append("\n  ").append(note);
    throw Failure(kExitUsage, all);
}

std::string EffectShader::annotation(CGparameter parameter, const char* name) const {
    const CGannotation found = fCg.cgGetNamedParameterAnnotation(parameter, name);
    const char* text = found ? fCg.cgGetStringAnnotationValue(found) : nullptr;
    return text ? text : "";
}

void EffectShader::addParameters() {
    const MatrixUse use(textOf(fRequest.name), fRequest.name);
    for (CGparameter p = fCg.cgGetFirstEffectParameter(fEffect); p; p = F_cgGetNextParameter(p)) {
        const CGparameterclass kind = fCg.cgGetParameterClass(p);
        if (kind == CG_PARAMETERCLASS_SAMPLER || F_cgGetParameterType(p) == CG_TEXTURE) {
            addMap(p, kind == CG_PARAMETERCLASS_SAMPLER);
            continue;
        }
        const EffectWords words{F_cgGetParameterSemantic(p), F_cgGetParameterName(p), annotation(p, "Object"),
                                annotation(p, "Space")};
        const EffectMeaning meaning = meaningOf(words);
        if (meaning.kind == EffectMeaning::Kind::Matrix && kind == CG_PARAMETERCLASS_MATRIX)
            addMatrix(p, meaning, use);
        const bool isNumbers = kind == CG_PARAMETERCLASS_VECTOR || kind == CG_PARAMETERCLASS_SCALAR;
        const bool isAsked = !words.semantic.empty() || isZero(p); // a value of its own goes before a name
        if (isNumbers && isAsked && meaning.kind != EffectMeaning::Kind::Nothing &&
            meaning.kind != EffectMeaning::Kind::Matrix)
            fAsked.push_back({p, meaning, static_cast<size_t>(fCg.cgGetParameterColumns(p)), 0, false});
    }
    forgetErrors();
}

void EffectShader::addMatrix(CGparameter parameter, const EffectMeaning& meaning, const MatrixUse& use) {
    const auto rows = static_cast<size_t>(fCg.cgGetParameterRows(parameter));
    const auto columns = static_cast<size_t>(fCg.cgGetParameterColumns(parameter));
    if (rows >= 3 && columns >= 3)
        fAsked.push_back(
            {parameter, meaning, columns, rows, use.takesRowVectors(F_cgGetParameterName(parameter))});
}

/// The file that a texture's annotations name; empty: none.
std::string EffectShader::pictureOf(CGparameter parameter) const {
    for (const char* name : {"ResourceName", "resourcename", "name", "Name", "file", "File", "filename",
                             "FileName", "TextureFile", "SasResourceAddress"})
        if (std::string found = annotation(parameter, name); !found.empty())
            return found;
    return {};
}

void EffectShader::addMap(CGparameter parameter, bool isSampler) {
    if (isSampler && fCg.cgGetNamedSamplerStateAssignment(parameter, "Texture"))
        return; // it has the texture that this names
    std::string words =
        std::string(F_cgGetParameterName(parameter)) + " " + F_cgGetParameterSemantic(parameter);
    words = inSmallLetters(words);
    Map map{parameter, isSampler, Picture::White, nullptr};
    const bool isNormals = holdsOneOf(words, {"normal", "bump"});
    if (isNormals)
        map.picture = Picture::Normal;
    else if (holdsOneOf(words, {"diffuse", "color", "colour", "albedo", "base", "decal"}))
        map.picture = Picture::Base;
    std::string file = pictureOf(parameter);
    std::replace(file.begin(), file.end(), '\\', '/');
    if (!file.empty()) {
        Image image;
        image.name = file;
        image.path = std::filesystem::path(fRequest.name).parent_path() / file;
        image.model = fRequest.name;
        fPictures.images.push_back(image);
        Texture texture;
        texture.image = static_cast<int>(fPictures.images.size()) - 1;
        fPictures.textures.push_back(texture);
        TextureUse use;
        use.texture = texture.image;
        const size_t place = fMaps.size();
        fStore.ask(use, isNormals ? Encoding::Linear : Encoding::Srgb, AlphaUse::Kept, {1.0F, 1.0F, 1.0F},
                   [this, place](GLTexture2D* loaded) {
                       fMaps[place].texture = loaded;
                       if (loaded)
                           fMaps[place].picture = Picture::OfFile;
                   });
    }
    fMaps.push_back(map);
}

void EffectShader::setValue(const CgRequest::Value& value) const {
    const std::string asked = "--cg-set " + value.name + ": ";
    const CGparameter parameter = fCg.cgGetNamedEffectParameter(fEffect, value.name.c_str());
    if (!parameter) {
        std::vector<std::string> known;
        for (CGparameter p = fCg.cgGetFirstEffectParameter(fEffect); p; p = F_cgGetNextParameter(p))
            known.emplace_back(F_cgGetParameterName(p));
        throw Failure(kExitUsage, asked + fRequest.name +
                                      " has no such parameter; its parameters: " + commaSeparated(known));
    }
    const std::vector<float>& v = value.numbers;
    if (v.size() == 1)
        F_cgGLSetParameter1fv(parameter, v.data());
    else if (v.size() == 2)
        F_cgGLSetParameter2fv(parameter, v.data());
    else if (v.size() == 3)
        F_cgGLSetParameter3fv(parameter, v.data());
    else if (v.size() == 4)
        F_cgGLSetParameter4fv(parameter, v.data());
    else
        F_cgGLSetMatrixParameterfr(parameter, v.data());
    if (const CGerror error = F_cgGetError(); error != CG_NO_ERROR)
        throw Failure(kExitUsage, asked + F_cgGetErrorString(error));
}

void EffectShader::beginFrame(const View& view, int width, int height) {
    fView = view;
    fWidth = width;
    fHeight = height;
    fIsNewFrame = true;
}

void EffectShader::setTime(double seconds) {
    fSeconds = seconds;
    fIsNewFrame = true;
}

void EffectShader::setTextures(const TextureLayer* base, const TextureLayer* normal) {
    const auto nameOf = [](const TextureLayer* layer, const GLTexture2D* otherwise) {
        return layer ? layer->texture->textureName() : otherwise->textureName();
    };
    for (const Map& map : fMaps) {
        if (map.picture == Picture::OfFile)
            setMap(map, map.texture->textureName());
        else if (map.picture == Picture::Base)
            setMap(map, nameOf(base, fWhite));
        else
            setMap(map, map.picture == Picture::Normal ? nameOf(normal, fFlat) : fWhite->textureName());
    }
}

void EffectShader::setMap(const Map& map, GLuint texture) const {
    if (F_cgGLGetTextureParameter(map.parameter) == texture)
        return;
    if (map.isSampler)
        fCg.cgGLSetupSampler(map.parameter, texture);
    else
        F_cgGLSetTextureParameter(map.parameter, texture);
}

void EffectShader::feedMatrix(const Asked& asked, const koLinear::AffineMatrix& toWorld) const {
    const EffectMeaning& meaning = asked.meaning;
    koLinear::ProjMatrix matrix;
    if (meaning.world)
        matrix = koLinear::ProjMatrix(toWorld);
    if (meaning.view)
        matrix = matrix.then(koLinear::ProjMatrix(fView.worldToEye));
    if (meaning.projection)
        matrix = matrix.then(fView.projection);
    if (meaning.isInverse)
        matrix = inverseOf(matrix);
    // As it stands it is for row vectors.
    std::array<float, 16> numbers{};
    for (size_t row = 0; row < asked.rows; ++row)
        for (size_t column = 0; column < asked.columns; ++column) {
            const bool isAsItStands = asked.takesRows != meaning.isTransposed;
            numbers[row * asked.columns + column] = static_cast<float>(
                isAsItStands ? matrix.data()[row * 4 + column] : matrix.data()[column * 4 + row]);
        }
    F_cgGLSetMatrixParameterfr(asked.parameter, numbers.data());
}

/// A place or a direction, in the space that is asked for.
koLinear::Vector EffectShader::vectorOf(const Asked& asked, const koLinear::AffineMatrix& toWorld,
                                        bool& isPlace) const {
    using Kind = EffectMeaning::Kind;
    const EffectMeaning& meaning = asked.meaning;
    const bool isOfEye = meaning.kind == Kind::EyePosition || meaning.kind == Kind::EyeDirection;
    const koLinear::AffineMatrix from =
        isOfEye ? fView.worldToEye.inverse() : fLights.toWorld(meaning.light, fView.worldToEye);
    const koLinear::AffineMatrix to = meaning.space == EffectMeaning::Space::Object ? toWorld.inverse()
                                      : meaning.space == EffectMeaning::Space::Eye  ? fView.worldToEye
                                                                                   : koLinear::AffineMatrix();
    isPlace = meaning.kind == Kind::EyePosition || meaning.kind == Kind::LightPosition;
    const koLinear::Vector toSource = from.transform(koLinear::Vector(0.0, 0.0, 1.0));
    koLinear::Point place = from.transform(koLinear::Point());
    if (!isOfEye && fLights.specs()[meaning.light].fType == LightSpec::kDirectional)
        place = offset(fMiddle, scaled(toSource, fFar));
    if (isPlace) {
        const koLinear::Point found = to.transform(place);
        return {found[0], found[1], found[2]};
    }
    const koLinear::Vector found = to.transform(scaled(toSource, -1.0));
    return scaled(found, 1.0 / std::max(length(found), 1e-30));
}

void EffectShader::feed(const Asked& asked, const koLinear::AffineMatrix& toWorld) const {
    using Kind = EffectMeaning::Kind;
    const Kind kind = asked.meaning.kind;
    if (kind == Kind::Matrix)
        return feedMatrix(asked, toWorld);
    const bool isOfLight =
        kind == Kind::LightPosition || kind == Kind::LightDirection || kind == Kind::LightColor;
    const bool isThere = !isOfLight || asked.meaning.light < fLights.specs().size();
    std::array<float, 4> v{0.0F, 0.0F, 0.0F, 1.0F};
    if (kind == Kind::Time) {
        v.fill(static_cast<float>(fSeconds));
    } else if (kind == Kind::ViewportSize) {
        v = {static_cast<float>(fWidth), static_cast<float>(fHeight), 1.0F / static_cast<float>(fWidth),
             1.0F / static_cast<float>(fHeight)};
    } else if (kind == Kind::AmbientColor) {
        v = {0.09F * fExposure, 0.09F * fExposure, 0.1F * fExposure, 1.0F};
    } else if (kind == Kind::LightColor) {
        if (isThere)
            std::copy_n(fLights.light(asked.meaning.light).fDiffuseColor.data(), 3, v.begin());
    } else if (isThere) {
        bool isPlace = false;
        const koLinear::Vector found = vectorOf(asked, toWorld, isPlace);
        v = {static_cast<float>(found[0]), static_cast<float>(found[1]), static_cast<float>(found[2]),
             isPlace ? 1.0F : 0.0F};
    } else {
        return; // the effect's own place or direction stays
    }
    if (asked.columns <= 1)
        F_cgGLSetParameter1fv(asked.parameter, v.data());
    else
        F_cgGLSetParameter4fv(asked.parameter, v.data());
}

void EffectShader::draw(const koLinear::AffineMatrix& toWorld, const std::function<void()>& draw) {
    for (const Asked& asked : fAsked)
        if (fIsNewFrame || asked.isOfObject())
            feed(asked, toWorld);
    fIsNewFrame = false;
    for (CGpass pass = fCg.cgGetFirstPass(fTechnique); pass; pass = fCg.cgGetNextPass(pass)) {
        gl().glPushAttrib(GL_ALL_ATTRIB_BITS);
        fCg.cgSetPassState(pass);
        draw();
        fCg.cgResetPassState(pass);
        gl().glPopAttrib();
    }
}

std::vector<std::string> EffectShader::warnings() const {
    std::vector<std::string> all = fNotes;
    const std::vector<std::string>& more = fStore.warnings();
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

} // namespace orloview
