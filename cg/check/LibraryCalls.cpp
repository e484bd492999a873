#include "check/LibraryCalls.h"

#include <algorithm>

namespace orlocg {

/// Gives the first `counted` of `count` arguments the shape and the numbers of all of these together.
const Type* LibraryCalls::unify(Expression& e, size_t count, size_t counted, bool keepsInts) {
    wantCount(e, count, count);
    const Type* type = e.operands[0]->type;
    for (size_t i = 1; i < counted; ++i)
        type = common(e, type, e.operands[i]->type);
    const bool stays = keepsInts && type->scalar == Scalar::Int;
    type = fTypes.withScalar(type, stays ? Scalar::Int : wider(type->scalar, Scalar::Fixed));
    for (size_t i = 0; i < counted; ++i)
        convert(e.operands[i], type, "an argument");
    return type;
}

/// The widest numbers of the arguments, and no ints.
Scalar LibraryCalls::widest(const Expression& e) {
    Scalar result = Scalar::Fixed;
    for (const ExpressionPtr& operand : e.operands)
        result = wider(result, operand->type->scalar);
    return result;
}

const Type* LibraryCalls::convertAll(Expression& e, size_t count, const Type* to) {
    wantCount(e, count, count);
    for (ExpressionPtr& operand : e.operands)
        convert(operand, to, "an argument");
    return to;
}

void LibraryCalls::check(Expression& e, const LibraryFunction& function) {
    using Rule = LibraryRule;
    e.library = &function;
    for (const ExpressionPtr& operand : e.operands)
        wantNumbers(*operand, "an argument");
    switch (const Rule rule = function.rule) {
    case Rule::Map1:
    case Rule::Keep1:
        e.type = unify(e, 1, 1, rule == Rule::Keep1);
        break;
    case Rule::Map2:
    case Rule::Keep2:
        e.type = unify(e, 2, 2, rule == Rule::Keep2);
        break;
    case Rule::Map3:
    case Rule::Keep3:
        e.type = unify(e, 3, 3, rule == Rule::Keep3);
        break;
    case Rule::Test1:
        e.type = fTypes.withScalar(unify(e, 1, 1), Scalar::Bool);
        break;
    case Rule::Reduce1:
        e.type = fTypes.scalar(unify(e, 1, 1)->scalar);
        break;
    case Rule::Reduce2:
        e.type = fTypes.scalar(unify(e, 2, 2)->scalar);
        break;
    case Rule::Truth:
        wantCount(e, 1, 1);
        cast(e.operands[0], fTypes.withScalar(e.operands[0]->type, Scalar::Bool));
        e.type = fTypes.scalar(Scalar::Bool);
        break;
    case Rule::Cross:
        e.type = convertAll(e, 2, fTypes.vector(widest(e), 3));
        break;
    case Rule::Refract:
        e.type = unify(e, 3, 2);
        convert(e.operands[2], fTypes.scalar(e.type->scalar), "an argument");
        break;
    case Rule::Lit:
        convertAll(e, 3, fTypes.scalar(Scalar::Float));
        e.type = fTypes.vector(Scalar::Float, 4);
        break;
    case Rule::Transpose:
    case Rule::Determinant:
    case Rule::Inverse:
        return checkMatrixFunction(e, rule);
    case Rule::Multiply:
        return checkMultiply(e);
    case Rule::Pack2:
    case Rule::Pack4:
        convertAll(e, 1, fTypes.vector(Scalar::Float, rule == Rule::Pack2 ? 2 : 4));
        e.type = fTypes.scalar(Scalar::Float);
        break;
    case Rule::Unpack2:
    case Rule::Unpack4:
        convertAll(e, 1, fTypes.scalar(Scalar::Float));
        e.type = fTypes.vector(Scalar::Float, rule == Rule::Unpack2 ? 2 : 4);
        break;
    case Rule::Bytes:
        convertAll(e, 1, fTypes.vector(Scalar::Float, 4));
        e.type = fTypes.vector(Scalar::Int, 4);
        break;
    case Rule::Clip:
        e.type = unify(e, 1, 1);
        break;
    case Rule::SinCos:
    case Rule::Split:
        e.type = unify(e, rule == Rule::SinCos ? 3 : 2, 1);
        checkWritten(e);
        break;
    }
    if (e.type->isMatrix())
        fail(e, inQuotes(e.text) + " takes no matrix");
    if (function.rule == Rule::SinCos || function.rule == Rule::Clip)
        e.type = fTypes.voidType();
}

void LibraryCalls::checkMatrixFunction(Expression& e, LibraryRule rule) {
    wantCount(e, 1, 1);
    const Type* matrix = e.operands[0]->type;
    if (!matrix->isMatrix())
        fail(e, inQuotes(e.text) + " takes a matrix, and is given " + nameOf(matrix));
    if (rule != LibraryRule::Transpose && matrix->rows != matrix->columns)
        fail(e, nameOf(matrix) + " has no " + std::string(e.text));
    e.type = rule == LibraryRule::Determinant ? fTypes.scalar(matrix->scalar)
                                              : fTypes.numeric(matrix->scalar, matrix->columns, matrix->rows);
}

/// The arguments behind the first: the function writes to them.
void LibraryCalls::checkWritten(Expression& e) {
    for (size_t i = 1; i < e.operands.size(); ++i) {
        wantAssignable(*e.operands[i]);
        const Type* to = e.operands[i]->type;
        if (to->rows != e.type->rows || to->columns != e.type->columns || to->scalar <= Scalar::Int)
            fail(*e.operands[i], "what " + inQuotes(e.text) + " writes to has to be " + nameOf(e.type));
    }
}

void LibraryCalls::checkMultiply(Expression& e) {
    wantCount(e, 2, 2);
    const Type* a = e.operands[0]->type;
    const Type* b = e.operands[1]->type;
    const Scalar scalar = wider(wider(a->scalar, b->scalar), Scalar::Float);
    cast(e.operands[0], fTypes.withScalar(a, scalar));
    cast(e.operands[1], fTypes.withScalar(b, scalar));
    const auto wrong = [&]() { fail(e, "mul can't multiply " + nameOf(a) + " by " + nameOf(b)); };
    if (a->isScalar() || b->isScalar()) {
        e.type = fTypes.withScalar(a->isScalar() ? b : a, scalar);
    } else if (a->isMatrix() && b->isMatrix()) {
        if (a->columns != b->rows)
            wrong();
        e.type = fTypes.numeric(scalar, a->rows, b->columns);
    } else if (a->isMatrix()) {
        if (b->columns < a->columns)
            wrong();
        convert(e.operands[1], fTypes.vector(scalar, a->columns), "a vector of mul");
        e.type = fTypes.vector(scalar, a->rows);
    } else if (b->isMatrix()) {
        const unsigned rows = std::min(a->columns, b->rows);
        if (rows < 2)
            wrong();
        if (rows < b->rows) { // effects for Direct3D leave rows out
            fDiagnostics.warn(e.at, "mul leaves rows of " + nameOf(b) + " out");
            cast(e.operands[1], fTypes.numeric(scalar, rows, b->columns));
        }
        convert(e.operands[0], fTypes.vector(scalar, rows), "a vector of mul");
        e.type = fTypes.vector(scalar, b->columns);
    } else {
        if (a->columns != b->columns)
            wrong();
        e.type = fTypes.scalar(scalar);
    }
}

void LibraryCalls::check(Expression& e, const TextureCall& call) {
    using Form = TextureCall::Form;
    wantCount(e, 2, call.form == Form::Plain ? 5 : 3);
    const Type* sampler = e.operands[0]->type;
    if (!sampler->isSampler() || (sampler->sampler != call.sampler && sampler->sampler != SamplerKind::Any))
        fail(e, inQuotes(e.text) + " takes " + nameOf(fTypes.sampler(call.sampler)) + ", and is given " +
                    nameOf(sampler));
    const bool isPlainOrProjective = call.form == Form::Plain || call.form == Form::Projective;
    const bool isFlat = call.sampler != SamplerKind::Cube && !call.isOfLayers();
    if ((sampler->isShadow && !isPlainOrProjective) ||
        (call.form == Form::Projective && (call.isOfLayers() || (sampler->isShadow && !isFlat))))
        fail(e, inQuotes(e.text) + " can't be asked of " + nameOf(sampler));
    const unsigned n = call.coordinates();
    Expression& coordinate = *e.operands[1];
    wantNumbers(coordinate, "a texture coordinate");
    unsigned size = std::max<unsigned>(coordinate.type->isMatrix() ? 0U : coordinate.type->columns, 1);
    const auto want = [&](unsigned wanted, Scalar scalar) {
        if (size < wanted)
            fail(coordinate, inQuotes(e.text) + " takes " + nameOf(fTypes.vector(scalar, wanted)) +
                                 ", and is given " + nameOf(coordinate.type));
        convert(e.operands[1], wanted == 1 ? fTypes.scalar(scalar) : fTypes.vector(scalar, wanted),
                "a texture coordinate");
    };
    e.type = fTypes.vector(Scalar::Float, 4);
    switch (call.form) {
    case Form::Plain: {
        // One number more asks for a comparison of depths; a longer vector is cut.
        const bool compares =
            sampler->isShadow || (size == n + 1 && isFlat && call.sampler != SamplerKind::Dim3);
        want(compares ? n + 1 : n, Scalar::Float);
        break;
    }
    case Form::Projective:
        want(sampler->isShadow ? n + 2 : size > n + 1 ? 4 : n + 1, Scalar::Float);
        break;
    case Form::Biased:
    case Form::Level:
        want(4, Scalar::Float);
        break;
    case Form::Fetch:
        want(4, Scalar::Int);
        break;
    case Form::Size:
        want(1, Scalar::Int);
        e.type = fTypes.vector(Scalar::Int, 3);
        break;
    }
    const size_t extra = e.operands.size() - 2;
    const auto shape = [&](Scalar scalar) {
        return call.dimensions() == 1 ? fTypes.scalar(scalar) : fTypes.vector(scalar, call.dimensions());
    };
    for (size_t i = 0; i < extra; ++i) {
        const bool isOffset = extra == 1 || i == 2;
        convert(e.operands[2 + i], shape(isOffset ? Scalar::Int : Scalar::Float),
                isOffset ? "a texel offset" : "a derivative");
    }
}

} // namespace orlocg
