#include "language/Constants.h"

#include "language/Library.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace orlocg {

namespace {

using Values = Constants::Values;

constexpr uint64_t kMostNumbers = 4096;

double asScalar(double value, const Type* type) {
    if (type->isBool())
        return value != 0.0 ? 1.0 : 0.0;
    return type->isInt() ? std::trunc(value) : value;
}

/// The same numbers in another shape: smeared, cut, of other scalars.
Values converted(const Values& from, const Type* fromType, const Type* to) {
    if (!to->isNumeric() || !fromType->isNumeric())
        return from;
    Values result;
    const bool areMatrices = fromType->isMatrix() && to->isMatrix();
    for (uint32_t i = 0; i < to->size(); ++i) {
        const size_t at = areMatrices ? size_t{i} / to->columns * fromType->columns + i % to->columns : i;
        result.push_back(asScalar(from[from.size() == 1 ? 0 : std::min(at, from.size() - 1)], to));
    }
    return result;
}

std::optional<double> operation(std::string_view op, double a, double b, bool areInts) {
    const auto bits = [](double value) { return static_cast<int64_t>(value); };
    if (op == "+")
        return a + b;
    if (op == "-")
        return a - b;
    if (op == "*")
        return a * b;
    if (op == "/")
        return areInts ? (b == 0.0 ? std::nullopt : std::optional(std::trunc(a / b))) : std::optional(a / b);
    if (op == "%")
        return b == 0.0 ? std::nullopt : std::optional(std::fmod(a, b));
    if (op == "<")
        return a < b;
    if (op == ">")
        return a > b;
    if (op == "<=")
        return a <= b;
    if (op == ">=")
        return a >= b;
    if (op == "==")
        return a == b;
    if (op == "!=")
        return a != b;
    if (op == "&&")
        return a != 0.0 && b != 0.0;
    if (op == "||")
        return a != 0.0 || b != 0.0;
    if (!areInts || std::abs(a) > 4294967295.0 || std::abs(b) > 4294967295.0)
        return std::nullopt;
    if (op == "&")
        return static_cast<double>(bits(a) & bits(b));
    if (op == "|")
        return static_cast<double>(bits(a) | bits(b));
    if (op == "^")
        return static_cast<double>(bits(a) ^ bits(b));
    if ((op == "<<" || op == ">>") && b >= 0.0 && b < 32.0)
        return op == "<<" ? std::ldexp(a, static_cast<int>(b))
                          : std::floor(std::ldexp(a, -static_cast<int>(b)));
    return std::nullopt;
}

struct OfOne {
    std::string_view name;
    double (*function)(double);
};
constexpr std::array kOfOne = {
    OfOne{"abs", [](double x) { return std::abs(x); }},
    OfOne{"acos", [](double x) { return std::acos(x); }},
    OfOne{"asin", [](double x) { return std::asin(x); }},
    OfOne{"atan", [](double x) { return std::atan(x); }},
    OfOne{"ceil", [](double x) { return std::ceil(x); }},
    OfOne{"cos", [](double x) { return std::cos(x); }},
    OfOne{"cosh", [](double x) { return std::cosh(x); }},
    OfOne{"degrees", [](double x) { return x * 180.0 / 3.14159265358979323846; }},
    OfOne{"exp", [](double x) { return std::exp(x); }},
    OfOne{"exp2", [](double x) { return std::exp2(x); }},
    OfOne{"floor", [](double x) { return std::floor(x); }},
    OfOne{"frac", [](double x) { return x - std::floor(x); }},
    OfOne{"fract", [](double x) { return x - std::floor(x); }},
    OfOne{"log", [](double x) { return std::log(x); }},
    OfOne{"log10", [](double x) { return std::log10(x); }},
    OfOne{"log2", [](double x) { return std::log2(x); }},
    OfOne{"radians", [](double x) { return x * 3.14159265358979323846 / 180.0; }},
    OfOne{"round", [](double x) { return std::floor(x + 0.5); }},
    OfOne{"rsqrt", [](double x) { return 1.0 / std::sqrt(x); }},
    OfOne{"saturate", [](double x) { return std::clamp(x, 0.0, 1.0); }},
    OfOne{"sign", [](double x) { return (x > 0.0 ? 1.0 : 0.0) - (x < 0.0 ? 1.0 : 0.0); }},
    OfOne{"sin", [](double x) { return std::sin(x); }},
    OfOne{"sinh", [](double x) { return std::sinh(x); }},
    OfOne{"sqrt", [](double x) { return std::sqrt(x); }},
    OfOne{"tan", [](double x) { return std::tan(x); }},
    OfOne{"tanh", [](double x) { return std::tanh(x); }},
    OfOne{"trunc", [](double x) { return std::trunc(x); }},
};

struct OfMore {
    std::string_view name;
    size_t count;
    double (*function)(double, double, double);
};
constexpr std::array kOfMore = {
    OfMore{"atan2", 2, [](double y, double x, double) { return std::atan2(y, x); }},
    OfMore{"clamp", 3,
           [](double x, double least, double most) { return std::min(std::max(x, least), most); }},
    OfMore{"fmod", 2, [](double x, double y, double) { return std::fmod(x, y); }},
    OfMore{"ldexp", 2, [](double x, double y, double) { return x * std::exp2(y); }},
    OfMore{"lerp", 3, [](double a, double b, double t) { return a + (b - a) * t; }},
    OfMore{"max", 2, [](double a, double b, double) { return std::max(a, b); }},
    OfMore{"min", 2, [](double a, double b, double) { return std::min(a, b); }},
    OfMore{"mix", 3, [](double a, double b, double t) { return a + (b - a) * t; }},
    OfMore{"mod", 2, [](double x, double y, double) { return x - y * std::floor(x / y); }},
    OfMore{"pow", 2, [](double x, double y, double) { return std::pow(x, y); }},
    OfMore{"smoothstep", 3,
           [](double a, double b, double x) {
               const double t = std::clamp((x - a) / (b - a), 0.0, 1.0);
               return t * t * (3.0 - 2.0 * t);
           }},
    OfMore{"step", 2, [](double edge, double x, double) { return x < edge ? 0.0 : 1.0; }},
};

double dot(const Values& a, const Values& b) {
    return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

/// The functions that don't go number by number.
std::optional<Values> ofVectors(std::string_view name, const std::vector<Values>& operands) {
    const Values& a = operands[0];
    const Values& b = operands.back();
    if (name == "dot")
        return Values{dot(a, b)};
    if (name == "length")
        return Values{std::sqrt(dot(a, a))};
    if (name == "cross")
        return Values{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    Values result = a;
    if (name == "normalize") {
        for (double& value : result)
            value /= std::sqrt(dot(a, a));
        return result;
    }
    if (name == "distance") {
        for (size_t i = 0; i < result.size(); ++i)
            result[i] -= b[i];
        return Values{std::sqrt(dot(result, result))};
    }
    return std::nullopt;
}

} // namespace

const Values* Constants::of(const Variable& variable) {
    const bool isFixed = (variable.isConst || variable.isStatic) && !variable.isUniform &&
                         !variable.isParameter && !variable.isWritten;
    if (!isFixed || !variable.initializer || !variable.initializer->type)
        return nullptr;
    const auto [known, isNew] = fKnown.emplace(&variable, std::nullopt);
    if (isNew) {
        std::optional<Values> values = of(*variable.initializer);
        if (values && variable.type->isNumeric())
            values = converted(*values, variable.initializer->type, variable.type);
        fKnown[&variable] = std::move(values);
    }
    const std::optional<Values>& values = fKnown[&variable];
    return values ? &*values : nullptr;
}

/// How far behind its owner's first number a member's or an element's is.
std::optional<size_t> Constants::offsetIn(const Expression& pick) {
    const Type* owner = pick.operands[0]->type;
    if (pick.kind == Expression::Kind::Index) {
        const std::optional<Values> index = of(*pick.operands[1]);
        const uint64_t each = leavesOf(pick.type);
        if (!index || (*index)[0] < 0.0 ||
            ((*index)[0] + 1.0) * static_cast<double>(each) > static_cast<double>(leavesOf(owner)))
            return std::nullopt;
        return static_cast<size_t>((*index)[0]) * each;
    }
    size_t offset = 0;
    for (const Member& member : owner->structure->members) {
        if (member.name == pick.text)
            return offset;
        offset += leavesOf(member.type);
    }
    return std::nullopt;
}

std::optional<Constants::Slice> Constants::sliceOf(const Expression& e) {
    if (e.kind == Expression::Kind::Name) {
        const Values* values = of(*e.variable);
        return values ? std::optional(Slice{values, 0}) : std::nullopt;
    }
    if (e.kind != Expression::Kind::Index && e.kind != Expression::Kind::Member)
        return std::nullopt;
    const std::optional<Slice> owner = sliceOf(*e.operands[0]);
    const std::optional<size_t> offset = owner ? offsetIn(e) : std::nullopt;
    if (!offset || owner->first + *offset + leavesOf(e.type) > owner->values->size())
        return std::nullopt;
    return Slice{owner->values, owner->first + *offset};
}

std::optional<Values> Constants::of(const Expression& e) {
    using Kind = Expression::Kind;
    if (!e.type || leavesOf(e.type) > kMostNumbers * 16)
        return std::nullopt;
    if (e.kind == Kind::Number)
        return Values{asScalar(e.number, e.type)};
    if (e.kind == Kind::Name || e.kind == Kind::Index || e.kind == Kind::Member) {
        const Expression* root = &e;
        while (root->kind == Kind::Index || root->kind == Kind::Member)
            root = root->operands[0].get();
        std::optional<Slice> slice;
        std::optional<Values> owner; // made on the spot
        if (root->kind == Kind::Name)
            slice = sliceOf(e);
        else if ((owner = of(*e.operands[0])))
            if (const std::optional<size_t> offset = offsetIn(e))
                slice = Slice{&*owner, *offset};
        if (!slice)
            return std::nullopt;
        const auto first = slice->values->begin() + static_cast<std::ptrdiff_t>(slice->first);
        return Values(first, first + static_cast<std::ptrdiff_t>(leavesOf(e.type)));
    }
    std::vector<Values> operands;
    for (const ExpressionPtr& operand : e.operands) {
        std::optional<Values> values = of(*operand);
        if (!values)
            return std::nullopt;
        operands.push_back(std::move(*values));
    }
    switch (e.kind) {
    case Kind::Convert:
        return converted(operands[0], e.operands[0]->type, e.type);
    case Kind::Unary: {
        Values result = operands[0];
        for (double& value : result) {
            if (e.text == "-")
                value = -value;
            else if (e.text == "!")
                value = value == 0.0 ? 1.0 : 0.0;
            else
                return std::nullopt;
        }
        return result;
    }
    case Kind::Binary: {
        if (e.text == ",")
            return operands[1];
        if (operands[0].size() != operands[1].size())
            return std::nullopt;
        Values result;
        for (size_t i = 0; i < operands[0].size(); ++i) {
            const std::optional<double> value =
                operation(e.text, operands[0][i], operands[1][i], e.operands[0]->type->isInt());
            if (!value)
                return std::nullopt;
            result.push_back(*value);
        }
        return result;
    }
    case Kind::Choice: {
        Values result = operands.back();
        for (size_t at = operands.size() - 1; at >= 2; at -= 2)
            for (size_t i = 0; i < result.size(); ++i)
                if (operands[at - 2][operands[at - 2].size() == 1 ? 0 : i] != 0.0)
                    result[i] = operands[at - 1][i];
        return result;
    }
    case Kind::Swizzle: {
        const Type* of = e.operands[0]->type;
        Values result;
        for (const uint8_t pick : e.picks)
            result.push_back(operands[0][of->isMatrix() ? pick / 4 * of->columns + pick % 4 : pick]);
        return result;
    }
    case Kind::Call:
        return ofCall(e, operands);
    default:
        return std::nullopt;
    }
}

std::optional<Values> Constants::ofCall(const Expression& e, const std::vector<Values>& operands) const {
    if (e.constructs) {
        if (e.isCast && !e.type->isNumeric()) // (Struct)0
            return leavesOf(e.type) > kMostNumbers ? std::nullopt
                                                   : std::optional(Values(leavesOf(e.type), 0.0));
        Values result;
        for (const Values& each : operands)
            for (const double value : each)
                result.push_back(e.type->isNumeric() ? asScalar(value, e.type) : value);
        return result;
    }
    if (!e.library || operands.empty())
        return std::nullopt;
    for (const OfOne& each : kOfOne)
        if (each.name == e.text && operands.size() == 1) {
            Values result;
            for (const double value : operands[0])
                result.push_back(each.function(value));
            return result;
        }
    for (const Values& each : operands)
        if (each.size() != operands[0].size())
            return std::nullopt;
    for (const OfMore& each : kOfMore)
        if (each.name == e.text && operands.size() == each.count) {
            Values result;
            for (size_t i = 0; i < operands[0].size(); ++i)
                result.push_back(
                    each.function(operands[0][i], operands[1][i], operands[each.count == 3 ? 2 : 1][i]));
            return result;
        }
    return ofVectors(e.text, operands);
}

} // namespace orlocg
