#pragma once

#include "objects/Objects.h"

namespace orlocg {

/// A parameter that belongs to a context, and has a handle.
std::unique_ptr<ParameterObject> makeOwnParameter(ContextObject& context, const Type* type);

/// Ends connections and handles of a parameter and of its parts.
void forget(ParameterObject& parameter);

/// Whether all parts of both are of the same types.
bool haveSameShape(const Type* a, const Type* b);

/// Whether what one is set to comes to the other.
bool reaches(const ParameterObject& from, const ParameterObject& to);

/// `to` follows `from` from now on, and has its value.
void connect(ParameterObject& from, ParameterObject& to);
void disconnect(ParameterObject& to);

/// After a program's literals were changed: its text is another, at once or when it is compiled once more.
void textChanged(ProgramObject& program);

/// `made` stands where `old` stood, without its parts.
void takeConnections(ParameterObject& made, ParameterObject& old);

} // namespace orlocg
