#pragma once

#include "objects/Objects.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <type_traits>

// Values of parameters as both libraries set and get them: numbers, matrices, elements of arrays.

namespace orlocg {

/// Calls `work`; a lack of memory becomes an error.
template <typename Work>
void guarded(Work&& work) {
    try {
        work();
    } catch (const std::bad_alloc&) {
        orlocg_raise(CG_MEMORY_ALLOC_ERROR);
    }
}

/// A number as a caller wants it; of what is no whole number of 32 bits the nearest.
template <typename Number, typename From>
Number numberFrom(From value) {
    if constexpr (std::is_integral_v<Number>) {
        constexpr auto kLeast = static_cast<double>(std::numeric_limits<Number>::min());
        constexpr auto kMost = static_cast<double>(std::numeric_limits<Number>::max());
        return value == value ? static_cast<Number>(std::clamp<double>(value, kLeast, kMost)) : 0;
    } else {
        return static_cast<Number>(value);
    }
}

/// Whether there is something where the caller's numbers are to be; an error if not.
inline bool checkPointer(const void* v) {
    if (!v)
        orlocg_raise(CG_INVALID_POINTER_ERROR);
    return v != nullptr;
}

/// A leaf's numbers, the program's own until somebody sets others.
inline std::vector<float>& valuesOf(ParameterObject& leaf) {
    if (leaf.values.empty() && leaf.type->isNumeric()) {
        leaf.values.assign(leaf.type->size(), 0.0F);
        std::transform(leaf.initial.begin(), leaf.initial.end(), leaf.values.begin(),
                       [](double value) { return static_cast<float>(value); });
    }
    return leaf.values;
}

/// A parameter of numbers without parts; else null and an error.
inline ParameterObject* findNumbers(CGparameter handle) {
    ParameterObject* parameter = orlocg_findParameter(handle);
    if (parameter && parameter->type->isNumeric())
        return parameter;
    if (parameter)
        orlocg_raise(CG_INVALID_VALUE_TYPE_ERROR);
    return nullptr;
}

/// Takes numbers over; of too few the last stands for those that are missing. True: they have to be told on.
template <typename Number>
bool takeNumbers(ParameterObject& p, const Number* v, size_t count) {
    if (p.type->isMatrix()) {
        orlocg_raise(CG_INVALID_VALUE_TYPE_ERROR);
        return false;
    }
    std::vector<float>& values = valuesOf(p);
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<float>(v[std::min(i, count - 1)]);
    return true;
}

template <typename Number>
void getNumbers(ParameterObject& p, Number* v, size_t count) {
    const std::vector<float>& values = valuesOf(p);
    for (size_t i = 0; i < count && !values.empty(); ++i)
        v[i] = numberFrom<Number>(values[std::min(i, values.size() - 1)]);
}

template <typename Number>
void setNumbers(CGparameter handle, const Number* v, size_t count) {
    guarded([&] {
        ParameterObject* p = findNumbers(handle);
        if (p && checkPointer(v) && takeNumbers(*p, v, count))
            orlocg_changed(p);
    });
}

template <typename Number>
void getNumbers(CGparameter handle, Number* v, size_t count) {
    guarded([&] {
        ParameterObject* p = findNumbers(handle);
        if (p && checkPointer(v))
            getNumbers(*p, v, count);
    });
}

/// Elements of an array.
struct Elements {
    ParameterObject* array = nullptr;
    size_t first = 0;
    size_t count = 0;

    ParameterObject& operator[](size_t i) const { return *array->parts[first + i]; }
};

/// Those that are asked for; none, and an error: there are no such, or `v` is null.
inline Elements elementsOf(CGparameter handle, long offset, long count, const void* v) {
    ParameterObject* array = orlocg_findParameter(handle);
    if (!array || !checkPointer(v))
        return {};
    const auto length = static_cast<long>(array->parts.size());
    if (!array->type->isArray() || !array->type->element->isNumeric())
        orlocg_raise(CG_ARRAY_PARAM_ERROR);
    else if (offset < 0 || count < 0 || offset > length || count > length - offset)
        orlocg_raise(CG_OUT_OF_ARRAY_BOUNDS_ERROR);
    else
        return {array, static_cast<size_t>(offset),
                static_cast<size_t>(count == 0 ? length - offset : count)};
    return {};
}

/// Sets elements by `take`, which is given one and its number and tells whether it has to be told on.
template <typename Take>
void setElements(CGparameter handle, long offset, long count, const void* v, Take&& take) {
    guarded([&] {
        const Elements elements = elementsOf(handle, offset, count, v);
        bool isNew = elements.count > 0;
        for (size_t i = 0; i < elements.count; ++i)
            isNew = take(elements[i], i) && isNew;
        if (isNew)
            orlocg_changedElements(elements.array, elements.first, elements.count);
    });
}

template <typename Number>
void setArray(CGparameter handle, long offset, long count, const Number* v, size_t size) {
    setElements(handle, offset, count, v,
                [&](ParameterObject& p, size_t i) { return takeNumbers(p, v + i * size, size); });
}

template <typename Number>
void getArray(CGparameter handle, long offset, long count, Number* v, size_t size) {
    guarded([&] {
        const Elements elements = elementsOf(handle, offset, count, v);
        for (size_t i = 0; i < elements.count; ++i)
            getNumbers(elements[i], v + i * size, size);
    });
}

enum class Order : uint8_t { Rows, Columns };

/// Where an element stands in a list of that order.
inline size_t placeOf(const Type* type, size_t row, size_t column, Order order) {
    return order == Order::Rows ? row * type->columns + column : column * type->rows + row;
}

/// Takes a leaf's numbers from a list in that order; a scalar's and a vector's are the same in both.
template <typename Number>
void takeAll(ParameterObject& leaf, const Number* v, Order order) {
    std::vector<float>& values = valuesOf(leaf);
    const size_t columns = std::max<size_t>(leaf.type->columns, 1);
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<float>(
            v[leaf.type->isMatrix() ? placeOf(leaf.type, i / columns, i % columns, order) : i]);
}

template <typename From, typename Number>
void putAll(const Type* type, const From& values, Number* v, Order order) {
    const size_t columns = std::max<size_t>(type->columns, 1);
    for (size_t i = 0; i < values.size(); ++i)
        v[type->isMatrix() ? placeOf(type, i / columns, i % columns, order) : i] =
            numberFrom<Number>(values[i]);
}

/// Whether it is a matrix; an error if not.
inline bool checkMatrix(const ParameterObject& p) {
    if (!p.type->isMatrix())
        orlocg_raise(CG_NOT_MATRIX_PARAM_ERROR);
    return p.type->isMatrix();
}

template <typename Number>
void setMatrix(CGparameter handle, const Number* m, Order order) {
    guarded([&] {
        ParameterObject* p = orlocg_findParameter(handle);
        if (!p || !checkMatrix(*p) || !checkPointer(m))
            return;
        takeAll(*p, m, order);
        orlocg_changed(p);
    });
}

template <typename Number>
void getMatrix(CGparameter handle, Number* m, Order order) {
    guarded([&] {
        ParameterObject* p = orlocg_findParameter(handle);
        if (p && checkMatrix(*p) && checkPointer(m))
            putAll(p->type, valuesOf(*p), m, order);
    });
}

template <typename Number>
void setMatrices(CGparameter handle, long offset, long count, const Number* m, Order order) {
    setElements(handle, offset, count, m, [&](ParameterObject& p, size_t i) {
        if (!checkMatrix(p))
            return false;
        takeAll(p, m + i * p.type->size(), order);
        return true;
    });
}

template <typename Number>
void getMatrices(CGparameter handle, long offset, long count, Number* m, Order order) {
    guarded([&] {
        const Elements elements = elementsOf(handle, offset, count, m);
        for (size_t i = 0; i < elements.count && checkMatrix(elements[i]); ++i)
            putAll(elements[i].type, valuesOf(elements[i]), m + i * elements[i].type->size(), order);
    });
}

} // namespace orlocg
