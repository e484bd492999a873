#include "language/Semantics.h"

#include <cctype>

namespace orlocg {

namespace {

std::string numbered(const char* name, int index) {
    return std::string(name) + std::to_string(index);
}

std::string indexed(const char* name, int index) {
    return std::string(name) + "[" + std::to_string(index) + "]";
}

constexpr int kTexCoords = 8;

Slot texCoordInput(int unit) {
    return {numbered("gl_MultiTexCoord", unit), numbered("TEXCOORD", unit)};
}

/// Generic attributes that are GL's own by another name: as the assembly profiles have always laid them out.
Slot genericSlot(int index) {
    switch (index) {
    case 0:
        return {"gl_Vertex", "POSITION0"};
    case 2:
        return {"gl_Normal", "NORMAL0", 3};
    case 3:
        return {"gl_Color", "COLOR0"};
    case 4:
        return {"gl_SecondaryColor", "COLOR1"};
    case 5:
        return {"gl_FogCoord", "FOGCOORD", 1};
    default:
        break;
    }
    if (index >= 8 && index < 8 + kTexCoords)
        return texCoordInput(index - 8);
    if (index == 1 || index == 6 || index == 7)
        return {numbered("cg_attribute", index), numbered("ATTR", index), 4, index};
    return {};
}

/// What goes from one program to the other beyond GL's own.
Slot declaredSlot(const Semantic& s) {
    if (s.name == "VARYING")
        return {numbered("cg_varying", s.number()), "", 4, -1, true};
    if ((s.name == "TEXCOORD" || s.name == "TEX") && s.number() < 32)
        return {numbered("cg_texcoord", s.number()), "", 4, -1, true};
    return {};
}

bool isColor(const Semantic& s) {
    return s.name == "COLOR" || s.name == "COL";
}

Slot vertexInput(const Semantic& s) {
    const int n = s.number();
    if (s.name == "POSITION" && n == 0)
        return genericSlot(0);
    if (s.name == "NORMAL" || s.name == "NRML")
        return genericSlot(2);
    if (s.name == "DIFFUSE" || (isColor(s) && n == 0))
        return genericSlot(3);
    if (s.name == "SPECULAR" || (isColor(s) && n == 1))
        return genericSlot(4);
    if (s.name == "FOGCOORD" || s.name == "FOG")
        return genericSlot(5);
    if (s.name == "TANGENT")
        return texCoordInput(6);
    if (s.name == "BINORMAL")
        return texCoordInput(7);
    if (s.name == "BLENDWEIGHT")
        return genericSlot(1);
    if (s.name == "PSIZE" || s.name == "PSIZ")
        return genericSlot(6);
    if (s.name == "BLENDINDICES")
        return genericSlot(7);
    if (s.name == "ATTR")
        return genericSlot(n);
    if (s.name == "VERTEXID")
        return {"float(gl_VertexID)", "", 1};
    if (s.name == "INSTANCEID")
        return {"float(gl_InstanceIDARB)", "", 1, -1, false, "GL_ARB_draw_instanced"};
    return {};
}

Slot fragmentInput(const Semantic& s) {
    const int n = s.number();
    if (s.name == "WPOS" || s.name == "POSITION" || s.name == "VPOS" || s.name == "HPOS")
        return {"gl_FragCoord", "WPOS"};
    if (isColor(s) && n < 2)
        return {n == 0 ? "gl_Color" : "gl_SecondaryColor", numbered("COL", n)};
    if (s.name == "FOG" || s.name == "FOGC" || s.name == "FOGP")
        return {"gl_FogFragCoord", "FOGCOORD", 1};
    if (s.name == "FACE" || s.name == "VFACE")
        return {"(gl_FrontFacing ? 1.0 : -1.0)", "", 1};
    if (s.name == "ISFRONTFACE")
        return {"float(gl_FrontFacing)", "", 1};
    return {};
}

/// What sources that are written for others too call what has a name here: "SV_Position", "SV_Target1",
/// "register(s3)".
void takeOtherSpelling(std::string& name) {
    constexpr std::string_view kStart = "SV_";
    if (name == "S")
        name = "TEXUNIT";
    if (!name.starts_with(kStart))
        return;
    name.erase(0, kStart.size());
    if (name == "TARGET")
        name = "COLOR";
    else if (name == "CLIPDISTANCE")
        name = "CLP";
}

} // namespace

Semantic::Semantic(const std::string& text) {
    size_t digits = text.size();
    while (digits > 0 && std::isdigit(static_cast<unsigned char>(text[digits - 1])) != 0)
        --digits;
    for (const char c : text.substr(0, digits))
        name += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (digits < text.size() && text.size() - digits < 4)
        index = std::stoi(text.substr(digits));
    takeOtherSpelling(name);
}

int texCoordOf(const Semantic& semantic) {
    const bool is = semantic.name == "TEXCOORD" || semantic.name == "TEX";
    return is && semantic.number() < kTexCoords ? semantic.number() : -1;
}

Slot inputSlot(Stage stage, const Semantic& semantic) {
    if (const int unit = texCoordOf(semantic); unit >= 0)
        return stage == Stage::Vertex ? texCoordInput(unit)
                                      : Slot{indexed("gl_TexCoord", unit), numbered("TEX", unit)};
    const Slot own = stage == Stage::Vertex ? vertexInput(semantic) : fragmentInput(semantic);
    return own.glsl.empty() && stage == Stage::Fragment ? declaredSlot(semantic) : own;
}

Slot outputSlot(Stage stage, const Semantic& s) {
    const int n = s.number();
    if (stage == Stage::Fragment) {
        if (isColor(s) && n < 8)
            return {indexed("gl_FragData", n), numbered("COL", n)};
        if (s.name == "DEPTH" || s.name == "DEPR")
            return {"gl_FragDepth", "DEPTH0", 1};
        return {};
    }
    if (const int unit = texCoordOf(s); unit >= 0)
        return {indexed("gl_TexCoord", unit), numbered("TEX", unit)};
    if (s.name == "POSITION" || s.name == "HPOS")
        return {"gl_Position", "HPOS"};
    if (isColor(s) && n < 2)
        return {n == 0 ? "gl_FrontColor" : "gl_FrontSecondaryColor", numbered("COL", n)};
    if (s.name == "BCOL" && n < 2)
        return {n == 0 ? "gl_BackColor" : "gl_BackSecondaryColor", ""};
    if (s.name == "FOG" || s.name == "FOGC")
        return {"gl_FogFragCoord", "FOGCOORD", 1};
    if (s.name == "PSIZE" || s.name == "PSIZ")
        return {"gl_PointSize", "PSIZ", 1};
    if (s.name == "CLP" && n < 6)
        return {indexed("gl_ClipDistance", n), "", 1};
    return declaredSlot(s);
}

} // namespace orlocg
