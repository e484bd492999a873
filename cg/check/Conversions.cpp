#include "check/Conversions.h"

#include <algorithm>
#include <utility>

namespace orlocg {

void Conversions::fail(const Expression& at, const std::string& message) const {
    fDiagnostics.fail(at.at, message);
}

Scalar Conversions::wider(Scalar a, Scalar b) {
    return std::max({a, b, Scalar::Int});
}

void Conversions::wantNumbers(const Expression& e, const char* what) const {
    if (!e.type->isNumeric())
        fail(e, std::string(what) + " has to be numbers, and is " + nameOf(e.type));
}

void Conversions::wantAssignable(const Expression& e) const {
    if (!e.isAssignable)
        fail(e, "this can't be assigned to");
    const Expression* root = &e;
    while (!root->variable && !root->operands.empty())
        root = root->operands[0].get();
    if (root->variable)
        root->variable->isWritten = true;
}

void Conversions::wantCount(const Expression& e, size_t least, size_t most) const {
    if (e.operands.size() >= least && e.operands.size() <= most)
        return;
    fail(e, inQuotes(e.text) + " takes " + std::to_string(least) +
                (most > least ? " to " + std::to_string(most) : std::string()) + " arguments, and is given " +
                std::to_string(e.operands.size()));
}

int Conversions::costOf(const Type* from, const Type* to) {
    if (from == to)
        return 0;
    if (from->isSampler() && to->isSampler())
        return from->sampler == SamplerKind::Any || to->sampler == SamplerKind::Any ? 1 : kNever;
    if (from->isArray() && to->isArray())
        return from->length == to->length || to->length == 0 ? costOf(from->element, to->element) : kNever;
    if (from->isStruct() && to->isStruct())
        return from->structure->implements(to->structure) ? 1 : kNever;
    if (!from->isNumeric() || !to->isNumeric())
        return kNever;
    int cost = 0;
    if (from->scalar != to->scalar) {
        const bool isPromotion = from->scalar < to->scalar;
        const bool staysFloat = from->scalar >= Scalar::Fixed && to->scalar >= Scalar::Fixed;
        cost += staysFloat ? 1 : (isPromotion ? 2 : 4);
    }
    if (from->rows == to->rows && from->columns == to->columns)
        return cost;
    if (from->size() == 1) // smeared
        return cost + (to->size() == 1 ? 1 : 10);
    if (from->isMatrix() && to->isMatrix() && from->rows >= to->rows && from->columns >= to->columns)
        return cost + 30;
    if (from->isVector() && !to->isMatrix() && from->columns >= std::max<unsigned>(to->columns, 1))
        return cost + 20 + from->columns - to->columns;
    const bool isFlatMatrix = (from->isMatrix() && (from->rows == 1 || from->columns == 1)) ||
                              (to->isMatrix() && (to->rows == 1 || to->columns == 1));
    return isFlatMatrix && from->size() == to->size() ? cost + 5 : kNever;
}

void Conversions::cast(ExpressionPtr& e, const Type* to) {
    if (e->type == to)
        return;
    auto made = std::make_unique<Expression>();
    made->kind = Expression::Kind::Convert;
    made->at = e->at;
    made->type = to;
    made->operands.push_back(std::move(e));
    e = std::move(made);
}

void Conversions::convert(ExpressionPtr& e, const Type* to, const char* what) const {
    if (!converts(e->type, to))
        fail(*e, std::string(what) + " has to be " + nameOf(to) + ", and " + nameOf(e->type) +
                     " can't be made one");
    if (e->type->isNumeric() && e->type->size() > to->size() && to->isNumeric())
        fDiagnostics.warn(e->at, nameOf(e->type) + " is cut to " + nameOf(to));
    if (e->type->isNumeric())
        cast(e, to);
}

const Type* Conversions::common(const Expression& at, const Type* a, const Type* b) const {
    const Scalar scalar = wider(a->scalar, b->scalar);
    if (a->size() == 1 && !a->isMatrix())
        return b->isScalar() ? fTypes.withScalar(a, scalar) : fTypes.withScalar(b, scalar);
    if (b->size() == 1 && !b->isMatrix())
        return fTypes.withScalar(a, scalar);
    if (a->isVector() && b->isVector())
        return fTypes.vector(scalar, std::min(a->columns, b->columns));
    if (a->rows == b->rows && a->columns == b->columns)
        return fTypes.withScalar(a, scalar);
    if (a->isMatrix() && b->isMatrix())
        return fTypes.numeric(scalar, std::min(a->rows, b->rows), std::min(a->columns, b->columns));
    fail(at, "there is no " + inQuotes(at.text) + " of " + nameOf(a) + " and " + nameOf(b) +
                 "; products of matrices and vectors are mul(...)");
}

} // namespace orlocg
