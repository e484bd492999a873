#include "objects/Values.h"
#include "objects/Handles.h"

#include <cstring>

// Values of parameters: numbers, matrices, everything of one at once.

namespace orlocg {

namespace {

/// Numbers in a parameter with all its parts; 0: there are other things in it.
size_t numbersIn(const ParameterObject& p) {
    if (p.isLeaf())
        return p.type->isNumeric() ? p.type->size() : 0;
    size_t sum = 0;
    for (const std::unique_ptr<ParameterObject>& part : p.parts) {
        const size_t own = numbersIn(*part);
        if (own == 0)
            return 0;
        sum += own;
    }
    return sum;
}

/// One that `count` numbers are enough for; else null and an error.
ParameterObject* findAll(CGparameter handle, int count, const void* v) {
    ParameterObject* p = find(handle);
    if (!p)
        return nullptr;
    const size_t needed = numbersIn(*p);
    if (needed == 0)
        raise(CG_NON_NUMERIC_PARAMETER_ERROR);
    else if (count < 0 || static_cast<size_t>(count) < needed)
        raise(CG_NOT_ENOUGH_DATA_ERROR);
    else if (checkPointer(v))
        return p;
    return nullptr;
}

template <typename Use>
void forEachPart(ParameterObject& p, Use&& use) {
    if (p.isLeaf())
        return use(p);
    for (const std::unique_ptr<ParameterObject>& part : p.parts)
        forEachPart(*part, use);
}

template <typename Number>
void setAll(CGparameter handle, int count, const Number* v, Order order) {
    guarded([&] {
        ParameterObject* p = findAll(handle, count, v);
        if (!p)
            return;
        forEachPart(*p, [&](ParameterObject& leaf) {
            takeAll(leaf, v, order);
            v += leaf.type->size();
        });
        // An array of leaves goes in one call.
        if (p->type->isArray() && p->parts.front()->isLeaf())
            orlocg_changedElements(p, 0, p->parts.size());
        else
            forEachPart(*p, [](ParameterObject& leaf) { orlocg_changed(&leaf); });
    });
}

/// Its numbers, or those that its program gave it; how many there were.
template <typename Number>
int getAll(CGparameter handle, int count, Number* v, Order order, bool isInitial) {
    return guarded<int>(0, [&] {
        ParameterObject* p = findAll(handle, count, v);
        int got = 0;
        if (p)
            forEachPart(*p, [&](ParameterObject& leaf) {
                if (isInitial && leaf.initial.empty())
                    return;
                isInitial ? putAll(leaf.type, leaf.initial, v + got, order)
                          : putAll(leaf.type, valuesOf(leaf), v + got, order);
                got += static_cast<int>(leaf.type->size());
            });
        return got;
    });
}

} // namespace

} // namespace orlocg

using namespace orlocg;

#define CG_VALUES(suffix, Number)                                                                            \
    void cgSetParameter1##suffix(CGparameter parameter, Number x) {                                          \
        setNumbers(parameter, &x, 1);                                                                        \
    }                                                                                                        \
    void cgSetParameter2##suffix(CGparameter parameter, Number x, Number y) {                                \
        const Number v[] = {x, y};                                                                           \
        setNumbers(parameter, v, 2);                                                                         \
    }                                                                                                        \
    void cgSetParameter3##suffix(CGparameter parameter, Number x, Number y, Number z) {                      \
        const Number v[] = {x, y, z};                                                                        \
        setNumbers(parameter, v, 3);                                                                         \
    }                                                                                                        \
    void cgSetParameter4##suffix(CGparameter parameter, Number x, Number y, Number z, Number w) {            \
        const Number v[] = {x, y, z, w};                                                                     \
        setNumbers(parameter, v, 4);                                                                         \
    }                                                                                                        \
    void cgSetParameter1##suffix##v(CGparameter parameter, const Number* v) {                                \
        setNumbers(parameter, v, 1);                                                                         \
    }                                                                                                        \
    void cgSetParameter2##suffix##v(CGparameter parameter, const Number* v) {                                \
        setNumbers(parameter, v, 2);                                                                         \
    }                                                                                                        \
    void cgSetParameter3##suffix##v(CGparameter parameter, const Number* v) {                                \
        setNumbers(parameter, v, 3);                                                                         \
    }                                                                                                        \
    void cgSetParameter4##suffix##v(CGparameter parameter, const Number* v) {                                \
        setNumbers(parameter, v, 4);                                                                         \
    }

CG_VALUES(f, float)
CG_VALUES(d, double)
CG_VALUES(i, int)

#define CG_ORDERED_VALUES(suffix, Number, order)                                                             \
    void cgSetMatrixParameter##suffix(CGparameter parameter, const Number* matrix) {                         \
        setMatrix(parameter, matrix, order);                                                                 \
    }                                                                                                        \
    void cgGetMatrixParameter##suffix(CGparameter parameter, Number* matrix) {                               \
        getMatrix(parameter, matrix, order);                                                                 \
    }                                                                                                        \
    void cgSetParameterValue##suffix(CGparameter parameter, int count, const Number* values) {               \
        setAll(parameter, count, values, order);                                                             \
    }                                                                                                        \
    int cgGetParameterValue##suffix(CGparameter parameter, int count, Number* values) {                      \
        return getAll(parameter, count, values, order, false);                                               \
    }                                                                                                        \
    int cgGetParameterDefaultValue##suffix(CGparameter parameter, int count, Number* values) {               \
        return getAll(parameter, count, values, order, true);                                                \
    }

CG_ORDERED_VALUES(fr, float, Order::Rows)
CG_ORDERED_VALUES(fc, float, Order::Columns)
CG_ORDERED_VALUES(dr, double, Order::Rows)
CG_ORDERED_VALUES(dc, double, Order::Columns)
CG_ORDERED_VALUES(ir, int, Order::Rows)
CG_ORDERED_VALUES(ic, int, Order::Columns)

CGenum cgGetMatrixParameterOrder(CGparameter handle) {
    const ParameterObject* p = find(handle);
    if (p && !p->type->isMatrix())
        raise(CG_NOT_MATRIX_PARAM_ERROR);
    return p && p->type->isMatrix() ? CG_ROW_MAJOR : CG_UNKNOWN;
}

const double* cgGetParameterValues(CGparameter handle, CGenum valueType, int* count) {
    if (count)
        *count = 0;
    ParameterObject* p = find(handle);
    if (!p)
        return nullptr;
    if (valueType != CG_DEFAULT && valueType != CG_CONSTANT && valueType != CG_CURRENT) {
        raise(CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
    return guarded<const double*>(nullptr, [&]() -> const double* {
        const ParameterObject* whole = p;
        while (whole->parent)
            whole = whole->parent;
        p->told.clear();
        if (valueType != CG_CONSTANT || whole->isLiteral)
            forEachPart(*p, [&](ParameterObject& leaf) {
                if (valueType == CG_DEFAULT)
                    p->told.insert(p->told.end(), leaf.initial.begin(), leaf.initial.end());
                else
                    p->told.insert(p->told.end(), valuesOf(leaf).begin(), valuesOf(leaf).end());
            });
        if (count)
            *count = static_cast<int>(p->told.size());
        return p->told.empty() ? nullptr : p->told.data();
    });
}
