#pragma once

#include "objects/Objects.h"

#include <memory>
#include <string>

namespace orlocg {

/// A compiled program as others take it: comments that list its variables, as the compiler writes them, and
/// what else it takes to read it back, then the GLSL.
///
///     //profile glslf
///     //program main
///     //var float4 tint :  : tint : -1 : 1
///     //var float2 uv : $vin.TEXCOORD0 : TEX0 : 0 : 1
///     //default tint = 1 0.5 0.25 1
///     #version 130
std::string writeCompiledText(const ProgramObject& program);

/// The same back. Null where it isn't such a text, or one of another stage; `listing` says where.
std::unique_ptr<CompiledProgram> readCompiledText(const std::string& text, Stage stage, std::string& listing);

} // namespace orlocg
