#include "check/Checker.h"

#include "language/State.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orlocg {

namespace {

bool isAssignment(std::string_view op) {
    return !op.empty() && op.back() == '=' && op != "==" && op != "!=" && op != "<=" && op != ">=";
}

bool isComparison(std::string_view op) {
    return op == "<" || op == ">" || op == "<=" || op == ">=" || op == "==" || op == "!=";
}

bool isBitOperation(std::string_view op) {
    return op == "%" || op == "&" || op == "|" || op == "^" || op == "<<" || op == ">>";
}

/// "matrix.modelview[0]" of such an expression behind "glstate"; nothing for others.
std::optional<std::string> statePathOf(const Expression& e) {
    if (e.kind == Expression::Kind::Name)
        return e.text == "glstate" ? std::optional<std::string>("") : std::nullopt;
    if (e.kind != Expression::Kind::Member && e.kind != Expression::Kind::Index)
        return std::nullopt;
    std::optional<std::string> path = statePathOf(*e.operands[0]);
    if (!path)
        return std::nullopt;
    if (e.kind == Expression::Kind::Member)
        return *path + (path->empty() ? "" : ".") + std::string(e.text);
    const Expression& index = *e.operands[1];
    if (index.kind != Expression::Kind::Number || index.number < 0 || index.number > 31)
        return std::nullopt;
    return *path + "[" + std::to_string(static_cast<int>(index.number)) + "]";
}

} // namespace

void Checker::check(ExpressionPtr& e) {
    using Kind = Expression::Kind;
    const bool isOwner = std::exchange(fIsOwner, false);
    switch (e->kind) {
    case Kind::Number:
    case Kind::Convert:
    case Kind::Swizzle:
    case Kind::State:
        break;
    case Kind::Name:
        checkName(*e);
        break;
    case Kind::Unary:
        check(e->operands[0]);
        checkUnary(*e);
        break;
    case Kind::Binary:
        checkBinary(e);
        break;
    case Kind::Choice:
        checkChoice(*e);
        break;
    case Kind::Call:
        checkCall(e);
        break;
    case Kind::Index:
        if (!checkState(e))
            checkIndex(e);
        break;
    case Kind::Member:
        if (!checkState(e))
            checkMember(e);
        break;
    case Kind::List:
        fail(*e, "a list of values can stand only where a variable is declared");
    }
    if (!isOwner)
        noteUse(*e);
}

void Checker::checkOwner(ExpressionPtr& e) {
    fIsOwner = true;
    check(e);
}

/// Takes note of what of a variable is used: members down to the first element of an array. Of what a
/// function is given, that is what the function uses of its parameter.
void Checker::noteUse(const Expression& e, const Variable* parameter) {
    using Kind = Expression::Kind;
    std::string path;
    const Expression* root = &e;
    bool isWhole = parameter != nullptr;
    for (; root->kind == Kind::Member || root->kind == Kind::Index || root->kind == Kind::Swizzle ||
           root->kind == Kind::Convert;
         root = root->operands[0].get()) {
        isWhole = isWhole && root->kind == Kind::Member;
        path = root->kind == Kind::Member ? joined({".", root->text, path}) : std::string();
    }
    if (root->kind != Kind::Name)
        return;
    std::set<std::string>& used = root->variable->partsUsed;
    constexpr size_t kMostParts = 32; // to be told apart at each call
    if (!isWhole || !parameter->type->isStruct() || parameter->direction != Direction::In ||
        parameter->partsUsed.size() > kMostParts) {
        used.insert(path);
        return;
    }
    for (const std::string& part : parameter->partsUsed)
        used.insert(path + part);
}

void Checker::checkName(Expression& e) {
    for (size_t i = fScopes.size(); i-- > 0 && !e.variable;) {
        const auto found = fScopes[i].find(e.text);
        if (found != fScopes[i].end())
            e.variable = found->second;
    }
    const Member* member =
        e.variable || !fFunction || !fFunction->owner ? nullptr : fFunction->owner->structure->find(e.text);
    if (member) {
        e.kind = Expression::Kind::Member;
        e.operands.push_back(makeThis(e.at));
        e.type = member->type;
        e.isAssignable = true;
        return;
    }
    if (!e.variable) {
        const auto found = fGlobals.find(e.text);
        if (found == fGlobals.end())
            fail(e, "there is no variable " + inQuotes(e.text));
        e.variable = found->second;
        checkGlobal(*e.variable);
    }
    e.variable->isReferenced = true;
    e.type = e.variable->type;
    e.isAssignable = !e.variable->isConst;
}

void Checker::failOfMatrices(const Expression& e) const {
    fail(e, "there is no " + inQuotes(e.text) + " of matrices; take their rows");
}

void Checker::checkUnary(Expression& e) {
    ExpressionPtr& operand = e.operands[0];
    wantNumbers(*operand, "an operand");
    if (operand->type->isMatrix() && (e.text == "!" || e.text == "~"))
        failOfMatrices(e);
    if (e.text == "!") {
        cast(operand, fTypes.withScalar(operand->type, Scalar::Bool));
    } else if (e.text == "~") {
        cast(operand, fTypes.withScalar(operand->type, Scalar::Int));
    } else if (e.text == "-") {
        cast(operand, fTypes.withScalar(operand->type, wider(operand->type->scalar, Scalar::Int)));
    } else {
        wantAssignable(*operand);
        if (operand->type->isBool())
            fail(e, "a bool can't be counted");
    }
    e.type = operand->type;
}

void Checker::checkBinary(ExpressionPtr& e) {
    if (isAssignment(e->text))
        return checkAssignment(*e);
    for (ExpressionPtr& operand : e->operands)
        check(operand);
    if (e->text == ",") {
        e->type = e->operands[1]->type;
        return;
    }
    for (const ExpressionPtr& operand : e->operands)
        wantNumbers(*operand, "an operand");
    const Type* type = common(*e, e->operands[0]->type, e->operands[1]->type);
    if (type->isMatrix() && isBitOperation(e->text))
        failOfMatrices(*e);
    if (e->text == "&&" || e->text == "||")
        type = fTypes.withScalar(type, Scalar::Bool);
    else if (isBitOperation(e->text) && !(e->text == "%" && type->scalar > Scalar::Int))
        type = fTypes.withScalar(type, Scalar::Int);
    if (e->operands[0]->type->isBool() && e->operands[1]->type->isBool() &&
        (e->text == "==" || e->text == "!="))
        type = fTypes.withScalar(type, Scalar::Bool);
    for (ExpressionPtr& operand : e->operands)
        convert(operand, type, "an operand");
    if (type->isMatrix() && (isComparison(e->text) || type->isBool()))
        fail(*e, "matrices can't be compared as a whole; compare their rows");
    e->type = isComparison(e->text) ? fTypes.withScalar(type, Scalar::Bool) : type;
}

void Checker::checkAssignment(Expression& e) {
    check(e.operands[0]);
    const Type* to = e.operands[0]->type;
    if (e.operands[1]->kind == Expression::Kind::List)
        e.operands[1] = fillFromAll(to, *e.operands[1]);
    else
        check(e.operands[1]);
    wantAssignable(*e.operands[0]);
    e.type = to;
    if (e.text == "=")
        return convert(e.operands[1], to, "what is assigned");
    // "a += b" is done in the wider of both, and what comes out is a's type.
    wantNumbers(*e.operands[0], "what is assigned to");
    wantNumbers(*e.operands[1], "an operand");
    const Type* type = fTypes.withScalar(to, wider(to->scalar, e.operands[1]->type->scalar));
    if (type->isMatrix() && isBitOperation(e.text.substr(0, e.text.size() - 1)))
        failOfMatrices(e);
    if (isBitOperation(e.text.substr(0, e.text.size() - 1)) &&
        !(e.text == "%=" && type->scalar > Scalar::Int))
        type = fTypes.withScalar(to, Scalar::Int);
    convert(e.operands[1], type, "an operand");
}

void Checker::checkChoice(Expression& e) {
    for (ExpressionPtr& operand : e.operands)
        check(operand);
    const size_t last = e.operands.size() - 1;
    const Type* type = e.operands[last]->type;
    for (size_t i = last; i >= 2; i -= 2) { // from the inside
        const Type* condition = e.operands[i - 2]->type;
        const Type* value = e.operands[i - 1]->type;
        wantNumbers(*e.operands[i - 2], "the condition of '? :'");
        if (value->isNumeric() && type->isNumeric()) {
            const bool areBools = value->isBool() && type->isBool();
            type = common(e, value, type);
            if (condition->size() > 1 && type->isScalar())
                type = fTypes.withScalar(condition, type->scalar);
            if (areBools)
                type = fTypes.withScalar(type, Scalar::Bool);
            if (condition->size() > 1 && (condition->isMatrix() || condition->size() < type->size()))
                fail(e,
                     "a condition of " + nameOf(condition) + " can't choose among values of " + nameOf(type));
        } else if (value != type) {
            fail(e, "'? :' can't choose between " + nameOf(value) + " and " + nameOf(type));
        } else if (holdsSampler(type)) {
            fail(e, "'? :' can't choose between samplers");
        }
    }
    e.type = type;
    for (size_t i = 0; i <= last; ++i) {
        if (i == last || i % 2 == 1) {
            if (type->isNumeric())
                convert(e.operands[i], type, "a value of '? :'");
            continue;
        }
        const bool chooses = type->isNumeric() && e.operands[i]->type->size() > 1;
        convert(e.operands[i],
                chooses ? fTypes.vector(Scalar::Bool, type->columns) : fTypes.scalar(Scalar::Bool),
                "the condition of '? :'");
    }
}

bool Checker::checkState(ExpressionPtr& e) {
    const std::optional<std::string> path = statePathOf(*e);
    if (!path || fGlobals.count("glstate") != 0)
        return false;
    const std::optional<State> state = stateOf(*path);
    if (!state) {
        bool isPart = false;
        for (const Expression* of = e->operands[0].get(); !isPart && of->kind != Expression::Kind::Name;
             of = of->operands[0].get()) {
            const std::optional<std::string> outer = statePathOf(*of);
            isPart = outer && stateOf(*outer);
        }
        if (!isPart)
            fail(*e, "there is no state glstate." + *path);
        return false; // a component or a row of one
    }
    e->kind = Expression::Kind::State;
    e->state = state->glsl;
    e->type = state->rows || state->columns ? fTypes.numeric(Scalar::Float, state->rows, state->columns)
                                            : fTypes.scalar(Scalar::Float);
    e->operands.clear();
    return true;
}

void Checker::checkIndex(ExpressionPtr& e) {
    checkOwner(e->operands[0]);
    check(e->operands[1]);
    const Type* of = e->operands[0]->type;
    Expression& index = *e->operands[1];
    if (!index.type->isNumeric() || index.type->size() != 1)
        fail(index, "an index has to be a single number, and is " + nameOf(index.type));
    uint32_t length = 0;
    if (of->isArray()) {
        length = of->length;
        e->type = of->element;
    } else if (of->isMatrix()) {
        length = of->rows;
        e->type = fTypes.vector(of->scalar, of->columns);
    } else if (of->isVector()) {
        length = of->columns;
        e->type = fTypes.scalar(of->scalar);
    } else {
        fail(*e, nameOf(of) + " has no elements");
    }
    const bool isNegative = index.kind == Expression::Kind::Unary && index.text == "-" &&
                            index.operands[0]->kind == Expression::Kind::Number;
    if (isNegative ||
        (index.kind == Expression::Kind::Number && !(index.number >= 0 && index.number < length)))
        fail(index, "the index is outside " + nameOf(of));
    e->isAssignable = e->operands[0]->isAssignable;
    cast(e->operands[1], fTypes.scalar(Scalar::Int));
}

void Checker::checkMember(ExpressionPtr& e) {
    checkOwner(e->operands[0]);
    const Type* of = e->operands[0]->type;
    if (of->isArray() && e->text == "length") {
        makeLength(*e);
    } else if (of->isStruct()) {
        const Member* member = of->structure->find(e->text);
        if (!member)
            fail(*e, "the struct " + of->structure->name + " has no member " + inQuotes(e->text));
        e->type = member->type;
        e->isAssignable = e->operands[0]->isAssignable;
    } else if (of->isMatrix()) {
        makeMatrixSwizzle(*e, of);
    } else if (of->isNumeric()) {
        makeVectorSwizzle(*e, of);
    } else {
        fail(*e, nameOf(of) + " has no members");
    }
}

void Checker::makeLength(Expression& e) {
    e.number = e.operands[0]->type->length;
    e.kind = Expression::Kind::Number;
    e.operands.clear();
    e.type = fTypes.scalar(Scalar::Int);
}

void Checker::makeVectorSwizzle(Expression& e, const Type* of) {
    const unsigned length = std::max<unsigned>(of->columns, 1);
    for (const std::string_view names :
         {std::string_view("xyzw"), std::string_view("rgba"), std::string_view("stpq")}) {
        if (e.text.size() > 4 || e.text.find_first_not_of(names) != e.text.npos)
            continue;
        for (const char c : e.text)
            e.picks.push_back(static_cast<uint8_t>(names.find(c)));
    }
    if (e.picks.empty())
        fail(e, inQuotes(e.text) + " picks nothing of " + nameOf(of));
    for (const uint8_t pick : e.picks)
        if (pick >= length)
            fail(e, nameOf(of) + " has no component " + inQuotes(e.text));
    endSwizzle(e, of);
}

void Checker::endSwizzle(Expression& e, const Type* of) {
    e.kind = Expression::Kind::Swizzle;
    e.type = e.picks.size() == 1 ? fTypes.scalar(of->scalar)
                                 : fTypes.vector(of->scalar, static_cast<unsigned>(e.picks.size()));
    const std::set<uint8_t> distinct(e.picks.begin(), e.picks.end());
    e.isAssignable = e.operands[0]->isAssignable && distinct.size() == e.picks.size();
}

/// "_m00_m11", counted from 0, or "_11_22", from 1.
void Checker::makeMatrixSwizzle(Expression& e, const Type* of) {
    for (std::string_view rest = e.text; !rest.empty();) {
        const bool fromZero = rest.starts_with("_m");
        const size_t digits = fromZero ? 2 : 1;
        const int base = fromZero ? 0 : 1;
        if (rest[0] != '_' || rest.size() < digits + 2)
            fail(e, inQuotes(e.text) + " picks nothing of " + nameOf(of));
        const int row = rest[digits] - '0' - base;
        const int column = rest[digits + 1] - '0' - base;
        if (row < 0 || column < 0 || row >= of->rows || column >= of->columns || e.picks.size() == 4)
            fail(e, nameOf(of) + " has no element " + inQuotes(rest.substr(0, digits + 2)));
        e.picks.push_back(static_cast<uint8_t>(row * 4 + column));
        rest.remove_prefix(digits + 2);
    }
    endSwizzle(e, of);
}

/// GLSL's "texelFetchOffset(s, at, level, offset)", which sources written for GLSL profiles call, is
/// "tex2Dfetch(s, int4(at, 0, level), offset)".
void Checker::makeFetch(Expression& e) {
    auto place = std::make_unique<Expression>();
    place->at = e.operands[1]->at;
    place->kind = Expression::Kind::Call;
    place->constructs = fTypes.vector(Scalar::Int, 4);
    auto zero = std::make_unique<Expression>();
    zero->at = place->at;
    zero->type = fTypes.scalar(Scalar::Int);
    place->operands.push_back(std::move(e.operands[1]));
    place->operands.push_back(std::move(zero));
    place->operands.push_back(std::move(e.operands[2]));
    e.operands[1] = std::move(place);
    e.operands.erase(e.operands.begin() + 2);
    e.text = "tex2Dfetch";
}

void Checker::checkCall(ExpressionPtr& e) {
    if (e->constructs)
        return checkConstruct(e);
    if (e->text == "texelFetchOffset" && e->operands.size() == 4 && !fFunctions.contains(e->text))
        makeFetch(*e);
    for (ExpressionPtr& operand : e->operands)
        checkOwner(operand);
    resolveCall(e);
    for (size_t i = 0; i < e->operands.size(); ++i)
        noteUse(*e->operands[i], e->function ? e->function->parameters[i].get() : nullptr);
}

void Checker::resolveCall(ExpressionPtr& e) {
    if (e->isMethod)
        return checkMethodCall(*e);
    if (fFunction && fFunction->owner && hasMethod(fFunction->owner, e->text)) {
        e->operands.insert(e->operands.begin(), makeThis(e->at));
        return checkMethodCall(*e);
    }
    const auto found = fFunctions.find(e->text);
    if (found != fFunctions.end())
        return checkUserCall(*e, found->second);
    const bool isOfTwo = e->text == "atan" && e->operands.size() == 2;
    if (const LibraryFunction* function = findLibrary(isOfTwo ? "atan2" : e->text)) {
        if (function->rule == LibraryRule::Clip && fStage == Stage::Vertex)
            fail(*e, "a vertex program can't discard");
        return fLibrary.check(*e, *function);
    }
    if (const std::optional<TextureCall> call = parseTextureCall(e->text))
        return fLibrary.check(*e, *call);
    if (e->text == "emitVertex")
        fail(*e, "geometry programs are not supported (`emitVertex`)");
    fail(*e, "there is no function " + inQuotes(e->text));
}

bool Checker::hasMethod(const Type* type, std::string_view name) {
    const auto& methods = type->structure->methods;
    return std::any_of(methods.begin(), methods.end(),
                       [&](const Function* each) { return each->name == name; });
}

/// What a method was called of.
ExpressionPtr Checker::makeThis(const Location& at) {
    auto made = std::make_unique<Expression>();
    made->at = at;
    made->kind = Expression::Kind::Name;
    made->text = "this";
    made->variable = fFunction->parameters[0].get();
    made->type = made->variable->type;
    made->isAssignable = true;
    return made;
}

void Checker::checkMethodCall(Expression& e) {
    const Type* owner = e.operands[0]->type;
    if (owner->isArray() && e.text == "length" && e.operands.size() == 1)
        return makeLength(e);
    if (!owner->isStruct() || !hasMethod(owner, e.text))
        fail(e, nameOf(owner) + " has no function " + inQuotes(e.text));
    std::vector<Function*> methods;
    std::copy_if(owner->structure->methods.begin(), owner->structure->methods.end(),
                 std::back_inserter(methods), [&](const Function* each) { return each->name == e.text; });
    checkUserCall(e, methods);
}

bool Checker::isOpenFunction(const Function& function) {
    return std::any_of(function.parameters.begin(), function.parameters.end(),
                       [](const std::unique_ptr<Variable>& each) { return isOpen(each->type); });
}

/// The type that a parameter has when it is given something.
const Type* Checker::closed(const Type* type, const Type* given) {
    if (type->isArray() && given->isArray())
        return fTypes.array(closed(type->element, given->element), given->length);
    return isOpen(type) ? given : type;
}

/// A function for what it is called with, where that decides what its parameters are.
Function& Checker::closedFor(const Expression& call, Function& function) {
    constexpr size_t kMostCopies = 500;
    constexpr size_t kMostCopied = 100'000;
    if (!isOpenFunction(function))
        return function;
    std::vector<const Type*> types = {};
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        const Type* type = function.parameters[i]->type;
        types.push_back(i < call.operands.size() ? closed(type, call.operands[i]->type) : type);
    }
    Function*& known = fCopies[{&function, types}];
    if (known)
        return *known;
    if (function.isBeingChecked)
        fail(call, "the function " + inQuotes(function.name) + " calls itself");
    fCopied += function.tokens;
    if (fCopies.size() > kMostCopies || fCopied > kMostCopied)
        fail(call,
             "functions for arrays of any length, or for interfaces, are called with too many kinds of them");
    std::unique_ptr<Function> copy = copyOf(function);
    copy->origin = &function;
    for (size_t i = 0; i < types.size(); ++i)
        copy->parameters[i]->type = types[i];
    fProgram.methods.push_back(std::move(copy));
    return *(known = fProgram.methods.back().get());
}

/// Chooses the overload whose arguments have to change least.
void Checker::checkUserCall(Expression& e, const std::vector<Function*>& candidates) {
    Function* best = nullptr;
    int bestCost = kNever;
    int bestRank = 0;
    for (Function* candidate : candidates) {
        const auto& parameters = candidate->parameters;
        if (e.operands.size() > parameters.size())
            continue;
        int cost = 0;
        for (size_t i = 0; i < parameters.size() && cost < kNever; ++i) {
            const Variable& parameter = *parameters[i];
            if (i >= e.operands.size())
                cost += parameter.initializer ? 0 : kNever;
            else if (parameter.direction != Direction::In && !e.operands[i]->isAssignable &&
                     !(candidate->owner && i == 0)) // whether a method writes there is not known yet
                cost = kNever;
            else
                cost += parameter.direction == Direction::Out && !isOpen(parameter.type)
                            ? costOf(parameter.type, e.operands[i]->type)
                            : costOf(e.operands[i]->type, parameter.type);
        }
        // Among equals the one of the profile goes first, and a definition before its own declarations.
        const int rank = (candidate->profile.empty() ? 0 : 2) + (candidate->body ? 1 : 0);
        if (cost < bestCost || (cost == bestCost && best && rank > bestRank)) {
            best = candidate;
            bestCost = cost;
            bestRank = rank;
        }
    }
    if (!best) {
        std::string types;
        for (const ExpressionPtr& operand : e.operands)
            types += (types.empty() ? "" : ", ") + nameOf(operand->type);
        fail(e, "no function " + inQuotes(e.text) + " takes (" + types + ")");
    }
    if (!best->body)
        fail(e, "the function " + inQuotes(e.text) + " is declared, and has no body");
    best = &closedFor(e, *best);
    checkFunction(*best);
    for (size_t i = 0; i < best->parameters.size(); ++i) {
        const Variable& parameter = *best->parameters[i];
        if (i < e.operands.size() && parameter.direction == Direction::In)
            convert(e.operands[i], parameter.type, "an argument");
        else if (i < e.operands.size())
            wantAssignable(*e.operands[i]);
    }
    e.function = best;
    e.type = best->returns;
}

} // namespace orlocg
