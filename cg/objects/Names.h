#pragma once

#include "language/Semantics.h"

#include <Cg/cg.h>

#include <string>

namespace orlocg {

CGtype typeOf(const Type* type);
std::string nameOf(CGtype type);
CGtype typeNamed(const std::string& name);
CGparameterclass classOf(CGtype type);

/// A type of numbers.
struct TypeShape {
    const char* scalarName = nullptr; ///< null: it is none
    CGtype scalar = CG_UNKNOWN_TYPE;
    int rows = 0; ///< of a matrix
    int columns = 0;
};
TypeShape shapeOf(CGtype type);

std::string nameOf(CGresource resource);
/// CG_UNDEFINED: there is none of that name.
CGresource resourceNamed(const std::string& name);

/// The first of the row that a resource is in, and its number there.
CGresource baseOf(CGresource resource);
int numberOf(CGresource resource);

const char* nameOf(CGprofile profile);
CGprofile profileNamed(const std::string& name);
CGdomain domainOf(CGprofile profile);
bool isVertexProfile(CGprofile profile);
bool hasProperty(CGprofile profile, CGenum query); ///< CG_IS_..._PROFILE

/// Whether programs are compiled for it, for vertices or for fragments, and whether their text is GLSL then.
bool isCompiledFor(CGprofile profile);
bool hasGlslText(CGprofile profile);
CGprofile compiledProfile(int index); ///< CG_PROFILE_UNKNOWN: there are fewer

const char* textOf(CGerror error);
const char* nameOf(CGparameterclass parameterClass);
CGparameterclass classNamed(const std::string& name);
const char* nameOf(CGdomain domain);
CGdomain domainNamed(const std::string& name);
const char* nameOf(CGenum value);
CGenum enumNamed(const std::string& name);

} // namespace orlocg
