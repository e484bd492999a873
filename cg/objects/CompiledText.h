#pragma once

#include "objects/Objects.h"

#include <memory>
#include <string>

namespace orlocg {

/// A compiled program as others take it: comments that list its variables, then its GLSL.
///
///     //profile glslf
///     //program main
///     //var float4 tint :  : tint : -1 : 1
///     //default tint = 1 0.5 0.25 1
///     //var float2 uv : $vin.TEXCOORD0 : TEX0 : 0 : 1
///
/// A variable has its type, its name with its owners, its semantic, its name in GLSL or its resource, its
/// place among the entry's (-1: a global), and whether the program uses it. Engines find the names of
/// uniforms there.
std::string writeCompiledText(const ProgramObject& program);

/// The same back. Null where it isn't such a text, or one of another stage; `listing` says where.
std::unique_ptr<CompiledProgram> readCompiledText(const std::string& text, Stage stage, std::string& listing);

} // namespace orlocg
