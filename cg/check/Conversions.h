#pragma once

#include "language/Ast.h"

namespace orlocg {

/// The conversions that the language makes by itself, and what is asked of operands. Throws CompileError.
class Conversions {
public:
    /// What a conversion that there is none of costs.
    static constexpr int kNever = 1'000'000;

    Conversions(Types& types, Diagnostics& diagnostics) : fTypes(types), fDiagnostics(diagnostics) {}

protected:
    /// What a conversion that nobody wrote costs: the overload with the least is called.
    static int costOf(const Type* from, const Type* to);
    static bool converts(const Type* from, const Type* to) { return costOf(from, to) < kNever; }
    /// Converts, or fails naming `what` couldn't be converted.
    void convert(ExpressionPtr& e, const Type* to, const char* what) const;
    /// Converts without asking whether the language would.
    static void cast(ExpressionPtr& e, const Type* to);

    /// Which of two kinds of numbers an operation is done in.
    static Scalar wider(Scalar a, Scalar b);
    /// The shape in which an operation of two shapes is done, with the wider numbers.
    const Type* common(const Expression& at, const Type* a, const Type* b) const;

    void wantNumbers(const Expression& e, const char* what) const;
    /// Takes note, too, that the variable is written.
    void wantAssignable(const Expression& e) const;
    void wantCount(const Expression& e, size_t least, size_t most) const;
    [[noreturn]] void fail(const Expression& at, const std::string& message) const;

    Types& fTypes;
    Diagnostics& fDiagnostics;
};

} // namespace orlocg
