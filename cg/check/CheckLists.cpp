#include "check/Checker.h"

#include <algorithm>
#include <utility>

// Constructors, and lists of values.

namespace orlocg {

void Checker::checkConstruct(ExpressionPtr& e) {
    const Type* to = e->constructs;
    for (ExpressionPtr& operand : e->operands)
        check(operand);
    e->type = to;
    if (to->kind == Type::Kind::Void) {
        if (!e->isCast)
            fail(*e, "there are no values of the type void");
        return;
    }
    if (to->isArray() || to->isStruct()) {
        if (e->operands.size() == 1 && e->operands[0]->type == to) {
            ExpressionPtr same = std::move(e->operands[0]);
            e = std::move(same);
            return;
        }
        if (e->isCast && e->operands[0]->type->isScalar()) // (Struct)0
            return;
        if (to->isArray() && to->length == 0) {
            const auto length = static_cast<uint32_t>(e->operands.size());
            to = e->type = e->constructs = fTypes.array(to->element, length);
        }
        auto list = std::make_unique<Expression>();
        list->kind = Expression::Kind::List;
        list->at = e->at;
        list->operands = std::move(e->operands);
        e = fillFromAll(to, *list);
        return;
    }
    if (!to->isNumeric())
        fail(*e, nameOf(to) + " can't be made of values");
    uint32_t given = 0;
    for (const ExpressionPtr& operand : e->operands) {
        wantNumbers(*operand, "a value");
        given += operand->type->size();
    }
    if (e->operands.size() == 1) {
        const Type* from = e->operands[0]->type;
        if (from->size() != to->size() && !converts(from, to))
            fail(*e, nameOf(from) + " can't be made " + nameOf(to));
        ExpressionPtr operand = std::move(e->operands[0]);
        cast(operand, to);
        e = std::move(operand);
        return;
    }
    if (given != to->size())
        fail(*e, nameOf(to) + " is made of " + std::to_string(to->size()) + " numbers, and there are " +
                     std::to_string(given));
}

const Type* Checker::lengthFrom(const Type* array, Expression& list) {
    const bool isNested = !list.operands.empty() && list.operands[0]->kind == Expression::Kind::List;
    size_t length = list.operands.size();
    if (!isNested && !array->element->isScalar()) { // numbers one behind the other
        size_t numbers = 0;
        for (ExpressionPtr& item : list.operands) {
            if (item->kind == Expression::Kind::List)
                continue;
            if (!item->type)
                check(item);
            numbers += item->type->isNumeric() ? item->type->size() : leavesOf(array->element);
        }
        const uint64_t each = std::max<uint64_t>(leavesOf(array->element), 1);
        length = (numbers + each - 1) / each;
    }
    if (length == 0 || length > 65536)
        fail(list, "an array needs 1 to 65536 values");
    return fTypes.array(array->element, static_cast<uint32_t>(length));
}

/// A value of the type, made of all of the list's items.
ExpressionPtr Checker::fillFromAll(const Type* type, Expression& list) {
    size_t next = 0;
    ExpressionPtr filled = fill(type, list, next);
    if (next < list.operands.size())
        fail(list, "there are more values than " + nameOf(type) + " holds");
    return filled;
}

/// The list's next item, with its type unless it is a list itself.
ExpressionPtr& Checker::itemFor(const Type* type, Expression& list, size_t next) {
    if (next >= list.operands.size())
        fail(list, "there are too few values for " + nameOf(type));
    ExpressionPtr& item = list.operands[next];
    if (item->kind != Expression::Kind::List && !item->type)
        check(item);
    return item;
}

/// A value of the type, made of the list's items from `next` on.
ExpressionPtr Checker::fill(const Type* type, Expression& list, size_t& next) {
    auto made = std::make_unique<Expression>();
    made->kind = Expression::Kind::Call;
    made->at = list.at;
    made->constructs = made->type = type;
    if (!type->isArray() && !type->isStruct())
        return fillNumbers(std::move(made), list, next);
    const Expression& first = *itemFor(type, list, next);
    if (first.kind != Expression::Kind::List &&
        (first.type == type || (type->isArray() && first.type->isArray() && converts(first.type, type))))
        return std::move(list.operands[next++]);
    const auto add = [&](const Type* part) {
        if (itemFor(part, list, next)->kind == Expression::Kind::List)
            made->operands.push_back(fillFromAll(part, *list.operands[next++]));
        else
            made->operands.push_back(fill(part, list, next));
    };
    if (type->isArray())
        for (uint32_t i = 0; i < type->length; ++i)
            add(type->element);
    else
        for (const Member& member : type->structure->members)
            add(member.type);
    return made;
}

/// The same for numbers: `made` is their constructor.
ExpressionPtr Checker::fillNumbers(ExpressionPtr made, Expression& list, size_t& next) {
    const Type* type = made->type;
    if (!type->isNumeric())
        fail(list, nameOf(type) + " can't be given in a list");
    const bool isAlone = next == 0 && list.operands.size() == 1;
    uint32_t missing = type->size();
    while (missing > 0) {
        ExpressionPtr& value = itemFor(type, list, next);
        if (value->kind == Expression::Kind::List) { // rows of a matrix
            const uint32_t width = type->isMatrix() ? type->columns : missing;
            made->operands.push_back(fillFromAll(fTypes.vector(type->scalar, width), *value));
            missing -= std::min(missing, width);
            ++next;
            continue;
        }
        wantNumbers(*value, "a value");
        const uint32_t size = value->type->size();
        if (missing == type->size() && (size >= missing || isAlone)) { // one value makes all of it
            convert(value, type, "a value");
            return std::move(list.operands[next++]);
        }
        if (size > missing)
            fail(*value, "there are more values than " + nameOf(type) + " holds");
        missing -= size;
        made->operands.push_back(std::move(value));
        ++next;
    }
    return made;
}

} // namespace orlocg
