#pragma once

#include "language/Semantics.h"

#include <Cg/cg.h>

#include <string>

namespace orlocg {

CGtype typeOf(const Type* type);
std::string nameOf(CGtype type);
CGtype typeNamed(const std::string& name);

std::string nameOf(CGresource resource);
/// CG_UNDEFINED: there is none of that name.
CGresource resourceNamed(const std::string& name);

/// The first of the row that a resource is in.
CGresource baseOf(CGresource resource);

const char* nameOf(CGprofile profile);
CGprofile profileNamed(const std::string& name);
bool isVertexProfile(CGprofile profile);
bool isKnown(CGprofile profile);

const char* textOf(CGerror error);

} // namespace orlocg
