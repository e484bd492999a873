#pragma once

#include "check/Conversions.h"
#include "language/Library.h"

namespace orlocg {

/// Calls of the standard library, whose arguments are checked already: converts these and finds the result's
/// type.
class LibraryCalls : private Conversions {
public:
    using Conversions::Conversions;

    void check(Expression& e, const LibraryFunction& function);
    void check(Expression& e, const TextureCall& call);

private:
    const Type* unify(Expression& e, size_t count, size_t counted, bool keepsInts = false);
    static Scalar widest(const Expression& e);
    const Type* convertAll(Expression& e, size_t count, const Type* to);
    void checkMatrixFunction(Expression& e, LibraryRule rule);
    void checkMultiply(Expression& e);
    void checkWritten(Expression& e);
};

} // namespace orlocg
