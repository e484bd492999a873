#include "compile/Checker.h"

#include "compile/State.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orlocg {

namespace {

constexpr int kDeepestCalls = 64;
constexpr int kNever = 1'000'000;

bool isAssignment(std::string_view op) {
    return !op.empty() && op.back() == '=' && op != "==" && op != "!=" && op != "<=" && op != ">=";
}

bool isComparison(std::string_view op) {
    return op == "<" || op == ">" || op == "<=" || op == ">=" || op == "==" || op == "!=";
}

bool isBitOperation(std::string_view op) {
    return op == "%" || op == "&" || op == "|" || op == "^" || op == "<<" || op == ">>";
}

/// Which of two kinds of numbers an operation is done in.
Scalar wider(Scalar a, Scalar b) {
    return std::max({a, b, Scalar::Int});
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

Checker::Checker(Program& program, Stage stage, Diagnostics& diagnostics)
    : fProgram(program), fTypes(program.types), fStage(stage), fDiagnostics(diagnostics) {}

void Checker::fail(const Expression& at, const std::string& message) const {
    fDiagnostics.fail(at.at, message);
}

Function& Checker::check(const std::string& entry) {
    for (const std::unique_ptr<Function>& function : fProgram.functions)
        fFunctions[function->name].push_back(function.get());
    for (const std::unique_ptr<Variable>& global : fProgram.globals)
        fGlobals[global->name] = global.get();
    Function* found = nullptr;
    for (Function* candidate : fFunctions[entry])
        if (candidate->body)
            found = candidate;
    if (!found)
        fDiagnostics.fail({}, "there is no function " + inQuotes(entry) + " with a body to begin with");
    checkFunction(*found);
    return *found;
}

void Checker::checkFunction(Function& function) {
    if (function.isChecked)
        return;
    if (function.isBeingChecked)
        fDiagnostics.fail(function.at, "the function " + inQuotes(function.name) + " calls itself");
    if (++fDepth > kDeepestCalls)
        fDiagnostics.fail(function.at, "functions call each other more than 64 deep");
    function.isBeingChecked = true;
    Function* const caller = std::exchange(fFunction, &function);
    std::vector<Scope> callersScopes = std::exchange(fScopes, {Scope()});
    const int callersLoops = std::exchange(fLoops, 0);
    for (const std::unique_ptr<Variable>& parameter : function.parameters) {
        if (parameter->type->isArray() && parameter->type->length == 0)
            fDiagnostics.fail(parameter->at,
                              "the length of the array " + inQuotes(parameter->name) + " is missing");
        if (!parameter->name.empty())
            declare(*parameter);
        if (parameter->initializer && !parameter->initializer->type)
            checkInitializer(*parameter, "a parameter's default");
    }
    checkStatement(*function.body);
    fScopes = std::move(callersScopes);
    fLoops = callersLoops;
    fFunction = caller;
    --fDepth;
    function.isBeingChecked = false;
    function.isChecked = true;
}

// Statements.

void Checker::declare(Variable& variable) {
    if (!fScopes.back().emplace(variable.name, &variable).second)
        fDiagnostics.fail(variable.at, "there is a variable " + inQuotes(variable.name) + " here already");
}

void Checker::checkVariable(Variable& variable) {
    if (variable.type->kind == Type::Kind::Void)
        fDiagnostics.fail(variable.at,
                          "the variable " + inQuotes(variable.name) + " can't be of the type void");
    if (!variable.initializer) {
        if (variable.type->isArray() && variable.type->length == 0)
            fDiagnostics.fail(variable.at,
                              "the array " + inQuotes(variable.name) + " has neither a length nor values");
        return;
    }
    checkInitializer(variable, "a value");
}

void Checker::checkInitializer(Variable& variable, const char* what) {
    Expression& first = *variable.initializer;
    if (first.kind == Expression::Kind::List) {
        if (variable.type->isArray() && variable.type->length == 0)
            variable.type = lengthFrom(variable.type, first);
        size_t next = 0;
        ExpressionPtr filled = fill(variable.type, first, next);
        if (next < first.operands.size())
            fail(first, "there are more values than " + nameOf(variable.type) + " holds");
        variable.initializer = std::move(filled);
        return;
    }
    check(variable.initializer);
    if (variable.type->isArray() && variable.type->length == 0 && variable.initializer->type->isArray())
        variable.type = variable.initializer->type;
    convert(variable.initializer, variable.type, what);
}

void Checker::checkGlobal(Variable& global) {
    global.isReferenced = true;
    if (!fCheckedGlobals.insert(&global).second)
        return;
    std::vector<Scope> scopes = std::exchange(fScopes, {});
    checkVariable(global);
    fScopes = std::move(scopes);
}

void Checker::checkCondition(ExpressionPtr& condition, const char* of) {
    check(condition);
    if (!condition->type->isNumeric() || condition->type->size() != 1)
        fail(*condition, std::string("the condition of ") + of + " has to be a single value, and is " +
                             nameOf(condition->type));
    cast(condition, fTypes.scalar(Scalar::Bool));
}

void Checker::checkBody(Statement& statement) {
    fScopes.emplace_back();
    checkStatement(statement);
    fScopes.pop_back();
}

void Checker::checkStatement(Statement& s) {
    using Kind = Statement::Kind;
    switch (s.kind) {
    case Kind::Block:
        fScopes.emplace_back();
        for (const std::unique_ptr<Statement>& each : s.statements)
            checkStatement(*each);
        fScopes.pop_back();
        break;
    case Kind::Declaration:
        for (const std::unique_ptr<Variable>& variable : s.variables) {
            checkVariable(*variable);
            declare(*variable); // a variable's value may name an outer one of the same name
        }
        break;
    case Kind::Expression:
        check(s.condition);
        break;
    case Kind::If:
        checkCondition(s.condition, "'if'");
        for (const std::unique_ptr<Statement>& each : s.statements)
            checkBody(*each);
        break;
    case Kind::For:
        fScopes.emplace_back();
        if (s.hasInit)
            checkStatement(*s.statements.front());
        if (s.condition)
            checkCondition(s.condition, "'for'");
        if (s.step)
            check(s.step);
        ++fLoops;
        checkBody(*s.statements.back());
        --fLoops;
        fScopes.pop_back();
        break;
    case Kind::While:
    case Kind::DoWhile:
        checkCondition(s.condition, "'while'");
        ++fLoops;
        checkBody(*s.statements.front());
        --fLoops;
        break;
    case Kind::Return:
        if (!s.condition) {
            if (fFunction->returns->kind != Type::Kind::Void)
                fDiagnostics.fail(s.at, "'return' needs a value here: " + inQuotes(fFunction->name) +
                                            " gives back " + nameOf(fFunction->returns));
            break;
        }
        check(s.condition);
        if (fFunction->returns->kind == Type::Kind::Void)
            fDiagnostics.fail(s.at, inQuotes(fFunction->name) + " gives nothing back");
        convert(s.condition, fFunction->returns, "what is returned");
        break;
    case Kind::Break:
    case Kind::Continue:
        if (fLoops == 0)
            fDiagnostics.fail(s.at,
                              s.kind == Kind::Break ? "'break' outside a loop" : "'continue' outside a loop");
        break;
    case Kind::Discard:
        if (fStage == Stage::Vertex)
            fDiagnostics.fail(s.at, "a vertex program can't discard");
        if (s.condition) {
            check(s.condition);
            wantNumbers(*s.condition, "the condition of 'discard'");
            cast(s.condition, fTypes.withScalar(s.condition->type, Scalar::Bool));
        }
        break;
    }
}

// Conversions.

void Checker::wantNumbers(const Expression& e, const char* what) const {
    if (!e.type->isNumeric())
        fail(e, std::string(what) + " has to be numbers, and is " + nameOf(e.type));
}

void Checker::wantAssignable(const Expression& e) const {
    if (!e.isAssignable)
        fail(e, "this can't be assigned to");
    const Expression* root = &e;
    while (!root->variable && !root->operands.empty())
        root = root->operands[0].get();
    if (root->variable)
        root->variable->isWritten = true;
}

void Checker::wantCount(const Expression& e, size_t least, size_t most) const {
    if (e.operands.size() >= least && e.operands.size() <= most)
        return;
    fail(e, inQuotes(e.text) + " takes " + std::to_string(least) +
                (most > least ? " to " + std::to_string(most) : std::string()) + " arguments, and is given " +
                std::to_string(e.operands.size()));
}

/// What a conversion that nobody wrote costs; kNever: there is none.
int Checker::costOf(const Type* from, const Type* to) const {
    if (from == to)
        return 0;
    if (from->isSampler() && to->isSampler())
        return from->sampler == SamplerKind::Any || to->sampler == SamplerKind::Any ? 1 : kNever;
    if (from->isArray() && to->isArray())
        return from->length == to->length ? costOf(from->element, to->element) : kNever;
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

bool Checker::converts(const Type* from, const Type* to) const {
    return costOf(from, to) < kNever;
}

void Checker::cast(ExpressionPtr& e, const Type* to) {
    if (e->type == to)
        return;
    auto made = std::make_unique<Expression>();
    made->kind = Expression::Kind::Convert;
    made->at = e->at;
    made->type = to;
    made->operands.push_back(std::move(e));
    e = std::move(made);
}

void Checker::convert(ExpressionPtr& e, const Type* to, const char* what) {
    if (!converts(e->type, to))
        fail(*e, std::string(what) + " has to be " + nameOf(to) + ", and " + nameOf(e->type) +
                     " can't be made one");
    if (e->type->isNumeric() && e->type->size() > to->size() && to->isNumeric())
        fDiagnostics.warn(e->at, nameOf(e->type) + " is cut to " + nameOf(to));
    if (e->type->isNumeric())
        cast(e, to);
}

/// The shape in which an operation of two shapes is done, with the wider numbers.
const Type* Checker::common(const Expression& at, const Type* a, const Type* b) {
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

// Expressions.

void Checker::check(ExpressionPtr& e) {
    using Kind = Expression::Kind;
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
}

void Checker::checkName(Expression& e) {
    for (size_t i = fScopes.size(); i-- > 0 && !e.variable;) {
        const auto found = fScopes[i].find(e.text);
        if (found != fScopes[i].end())
            e.variable = found->second;
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

void Checker::checkUnary(Expression& e) {
    ExpressionPtr& operand = e.operands[0];
    wantNumbers(*operand, "an operand");
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
    if (e.operands[1]->kind == Expression::Kind::List) {
        size_t next = 0;
        ExpressionPtr filled = fill(to, *e.operands[1], next);
        if (next < e.operands[1]->operands.size())
            fail(e, "there are more values than " + nameOf(to) + " holds");
        e.operands[1] = std::move(filled);
    } else {
        check(e.operands[1]);
    }
    wantAssignable(*e.operands[0]);
    e.type = to;
    if (e.text == "=")
        return convert(e.operands[1], to, "what is assigned");
    // "a += b" is done in the wider of both, and what comes out is a's type.
    wantNumbers(*e.operands[0], "what is assigned to");
    wantNumbers(*e.operands[1], "an operand");
    const Type* type = fTypes.withScalar(to, wider(to->scalar, e.operands[1]->type->scalar));
    if (isBitOperation(e.text.substr(0, e.text.size() - 1)) &&
        !(e.text == "%=" && type->scalar > Scalar::Int))
        type = fTypes.withScalar(to, Scalar::Int);
    convert(e.operands[1], type, "an operand");
}

void Checker::checkChoice(Expression& e) {
    for (ExpressionPtr& operand : e.operands)
        check(operand);
    wantNumbers(*e.operands[0], "the condition of '? :'");
    const Type* yes = e.operands[1]->type;
    const Type* no = e.operands[2]->type;
    const Type* condition = e.operands[0]->type;
    if (yes->isNumeric() && no->isNumeric()) {
        const bool areBools = yes->isBool() && no->isBool();
        e.type = common(e, yes, no);
        if (condition->size() > 1 && e.type->isScalar())
            e.type = fTypes.withScalar(condition, e.type->scalar);
        if (areBools)
            e.type = fTypes.withScalar(e.type, Scalar::Bool);
        if (condition->size() > 1 && (condition->isMatrix() || condition->size() < e.type->size()))
            fail(e,
                 "a condition of " + nameOf(condition) + " can't choose among values of " + nameOf(e.type));
        convert(e.operands[1], e.type, "a value of '? :'");
        convert(e.operands[2], e.type, "a value of '? :'");
        const Type* shape = condition->size() > 1 ? fTypes.vector(Scalar::Bool, e.type->columns)
                                                  : fTypes.scalar(Scalar::Bool);
        return convert(e.operands[0], shape, "the condition of '? :'");
    }
    if (yes != no)
        fail(e, "'? :' can't choose between " + nameOf(yes) + " and " + nameOf(no));
    if (holdsSampler(yes))
        fail(e, "'? :' can't choose between samplers");
    e.type = yes;
    convert(e.operands[0], fTypes.scalar(Scalar::Bool), "the condition of '? :'");
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
    check(e->operands[0]);
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
    check(e->operands[0]);
    const Type* of = e->operands[0]->type;
    if (of->isStruct()) {
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
    std::array<int, 4> times{};
    for (const uint8_t pick : e.picks) {
        if (pick >= length)
            fail(e, nameOf(of) + " has no component " + inQuotes(e.text));
        ++times[pick];
    }
    e.kind = Expression::Kind::Swizzle;
    e.type = e.picks.size() == 1 ? fTypes.scalar(of->scalar)
                                 : fTypes.vector(of->scalar, static_cast<unsigned>(e.picks.size()));
    e.isAssignable = e.operands[0]->isAssignable && *std::max_element(times.begin(), times.end()) == 1;
}

/// "_m00_m11", counted from 0, or "_11_22", from 1.
void Checker::makeMatrixSwizzle(Expression& e, const Type* of) {
    std::array<int, 16> times{};
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
        ++times[e.picks.back()];
        rest.remove_prefix(digits + 2);
    }
    e.kind = Expression::Kind::Swizzle;
    e.type = e.picks.size() == 1 ? fTypes.scalar(of->scalar)
                                 : fTypes.vector(of->scalar, static_cast<unsigned>(e.picks.size()));
    e.isAssignable = e.operands[0]->isAssignable && *std::max_element(times.begin(), times.end()) == 1;
}

// Calls.

void Checker::checkCall(ExpressionPtr& e) {
    if (e->constructs)
        return checkConstruct(e);
    for (ExpressionPtr& operand : e->operands)
        check(operand);
    const auto found = fFunctions.find(e->text);
    if (found != fFunctions.end())
        return checkUserCall(*e, found->second);
    if (const LibraryFunction* function = findLibrary(e->text))
        return checkLibraryCall(*e, *function);
    if (const std::optional<TextureCall> call = parseTextureCall(e->text))
        return checkTexture(*e, *call);
    fail(*e, "there is no function " + inQuotes(e->text));
}

/// Chooses the overload whose arguments have to change least.
void Checker::checkUserCall(Expression& e, const std::vector<Function*>& candidates) {
    Function* best = nullptr;
    int bestCost = kNever;
    for (Function* candidate : candidates) {
        const auto& parameters = candidate->parameters;
        if (e.operands.size() > parameters.size())
            continue;
        int cost = 0;
        for (size_t i = 0; i < parameters.size() && cost < kNever; ++i) {
            const Variable& parameter = *parameters[i];
            if (i >= e.operands.size())
                cost += parameter.initializer ? 0 : kNever;
            else if (parameter.direction != Direction::In && !e.operands[i]->isAssignable)
                cost = kNever;
            else
                cost += parameter.direction == Direction::Out ? costOf(parameter.type, e.operands[i]->type)
                                                              : costOf(e.operands[i]->type, parameter.type);
        }
        // A definition stands before its own declarations.
        if (cost < bestCost || (cost == bestCost && best && !best->body && candidate->body)) {
            best = candidate;
            bestCost = cost;
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
    for (size_t i = 0; i < best->parameters.size(); ++i) {
        const Variable& parameter = *best->parameters[i];
        if (i < e.operands.size() && parameter.direction == Direction::In)
            convert(e.operands[i], parameter.type, "an argument");
        else if (i < e.operands.size())
            wantAssignable(*e.operands[i]);
    }
    e.function = best;
    e.type = best->returns;
    checkFunction(*best);
}

void Checker::checkMultiply(Expression& e) {
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
        if (a->columns < b->rows)
            wrong();
        convert(e.operands[0], fTypes.vector(scalar, b->rows), "a vector of mul");
        e.type = fTypes.vector(scalar, b->columns);
    } else {
        if (a->columns != b->columns)
            wrong();
        e.type = fTypes.scalar(scalar);
    }
}

void Checker::checkLibraryCall(Expression& e, const LibraryFunction& function) {
    e.library = &function;
    for (const ExpressionPtr& operand : e.operands)
        wantNumbers(*operand, "an argument");
    // The shape and the numbers of all arguments together.
    const auto unify = [&](size_t count, size_t counted, bool keepsInts) {
        wantCount(e, count, count);
        const Type* type = e.operands[0]->type;
        for (size_t i = 1; i < counted; ++i)
            type = common(e, type, e.operands[i]->type);
        const bool stays = keepsInts && type->scalar == Scalar::Int;
        type = fTypes.withScalar(type, stays ? Scalar::Int : wider(type->scalar, Scalar::Fixed));
        for (size_t i = 0; i < counted; ++i)
            convert(e.operands[i], type, "an argument");
        return type;
    };
    switch (function.rule) {
    case LibraryRule::Map1:
    case LibraryRule::Keep1:
        e.type = unify(1, 1, function.rule == LibraryRule::Keep1);
        break;
    case LibraryRule::Map2:
    case LibraryRule::Keep2:
        if (function.name == "atan2" || e.operands.size() == 2)
            e.type = unify(2, 2, function.rule == LibraryRule::Keep2);
        else
            wantCount(e, 2, 2);
        break;
    case LibraryRule::Map3:
    case LibraryRule::Keep3:
        e.type = unify(3, 3, function.rule == LibraryRule::Keep3);
        break;
    case LibraryRule::Test1:
        e.type = fTypes.withScalar(unify(1, 1, false), Scalar::Bool);
        break;
    case LibraryRule::Reduce1:
        e.type = fTypes.scalar(unify(1, 1, false)->scalar);
        break;
    case LibraryRule::Reduce2:
        e.type = fTypes.scalar(unify(2, 2, false)->scalar);
        break;
    case LibraryRule::Truth:
        wantCount(e, 1, 1);
        cast(e.operands[0], fTypes.withScalar(e.operands[0]->type, Scalar::Bool));
        e.type = fTypes.scalar(Scalar::Bool);
        break;
    case LibraryRule::Cross:
        wantCount(e, 2, 2);
        e.type = fTypes.vector(
            wider(wider(e.operands[0]->type->scalar, e.operands[1]->type->scalar), Scalar::Fixed), 3);
        for (ExpressionPtr& operand : e.operands)
            convert(operand, e.type, "an argument");
        break;
    case LibraryRule::Refract:
        e.type = unify(3, 2, false);
        convert(e.operands[2], fTypes.scalar(e.type->scalar), "an argument");
        break;
    case LibraryRule::Lit:
        wantCount(e, 3, 3);
        for (ExpressionPtr& operand : e.operands)
            convert(operand, fTypes.scalar(Scalar::Float), "an argument");
        e.type = fTypes.vector(Scalar::Float, 4);
        break;
    case LibraryRule::Transpose:
    case LibraryRule::Determinant:
    case LibraryRule::Inverse:
        wantCount(e, 1, 1);
        if (!e.operands[0]->type->isMatrix())
            fail(e, inQuotes(e.text) + " takes a matrix, and is given " + nameOf(e.operands[0]->type));
        if (function.rule != LibraryRule::Transpose &&
            e.operands[0]->type->rows != e.operands[0]->type->columns)
            fail(e, nameOf(e.operands[0]->type) + " has no " + std::string(e.text));
        e.type = function.rule == LibraryRule::Determinant
                     ? fTypes.scalar(e.operands[0]->type->scalar)
                     : fTypes.numeric(e.operands[0]->type->scalar, e.operands[0]->type->columns,
                                      e.operands[0]->type->rows);
        break;
    case LibraryRule::Multiply:
        checkMultiply(e);
        break;
    case LibraryRule::SinCos:
    case LibraryRule::Split:
        e.type = unify(function.rule == LibraryRule::SinCos ? 3 : 2, 1, false);
        for (size_t i = 1; i < e.operands.size(); ++i) {
            wantAssignable(*e.operands[i]);
            const Type* to = e.operands[i]->type;
            if (to->rows != e.type->rows || to->columns != e.type->columns || to->scalar <= Scalar::Int)
                fail(*e.operands[i], "what " + inQuotes(e.text) + " writes to has to be " + nameOf(e.type));
        }
        if (function.rule == LibraryRule::SinCos)
            e.type = fTypes.voidType();
        break;
    case LibraryRule::Texture:
        break;
    }
    if (e.type->isMatrix() && function.rule != LibraryRule::Transpose &&
        function.rule != LibraryRule::Inverse && function.rule != LibraryRule::Multiply)
        fail(e, inQuotes(e.text) + " takes no matrix");
}

void Checker::checkTexture(Expression& e, const TextureCall& call) {
    using Form = TextureCall::Form;
    wantCount(e, 2, call.form == Form::Plain ? 5 : 3);
    const Type* sampler = e.operands[0]->type;
    if (!sampler->isSampler() || (sampler->sampler != call.sampler && sampler->sampler != SamplerKind::Any))
        fail(e, inQuotes(e.text) + " takes " + nameOf(fTypes.sampler(call.sampler)) + ", and is given " +
                    nameOf(sampler));
    const unsigned n = call.dimensions();
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
            size == n + 1 && call.sampler != SamplerKind::Dim3 && call.sampler != SamplerKind::Cube;
        want(compares ? n + 1 : n, Scalar::Float);
        break;
    }
    case Form::Projective:
        want(size > n + 1 ? 4 : n + 1, Scalar::Float);
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
        return n == 1 ? fTypes.scalar(scalar) : fTypes.vector(scalar, n);
    };
    for (size_t i = 0; i < extra; ++i) {
        const bool isOffset = extra == 1 || i == 2;
        convert(e.operands[2 + i], shape(isOffset ? Scalar::Int : Scalar::Float),
                isOffset ? "a texel offset" : "a derivative");
    }
}

// Constructors and lists.

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
        size_t next = 0;
        ExpressionPtr filled = fill(to, *list, next);
        if (next < list->operands.size())
            fail(*e, "there are more values than " + nameOf(to) + " holds");
        e = std::move(filled);
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

/// A value of the type, made of the list's items from `next` on.
ExpressionPtr Checker::fill(const Type* type, Expression& list, size_t& next) {
    auto made = std::make_unique<Expression>();
    made->kind = Expression::Kind::Call;
    made->at = list.at;
    made->constructs = made->type = type;
    const auto item = [&]() -> ExpressionPtr& {
        if (next >= list.operands.size())
            fail(list, "there are too few values for " + nameOf(type));
        return list.operands[next];
    };
    const auto fillFrom = [&](const Type* part) {
        if (item()->kind == Expression::Kind::List) {
            Expression& inner = *list.operands[next++];
            size_t innerNext = 0;
            made->operands.push_back(fill(part, inner, innerNext));
            if (innerNext < inner.operands.size())
                fail(inner, "there are more values than " + nameOf(part) + " holds");
        } else {
            made->operands.push_back(fill(part, list, next));
        }
    };
    if (type->isArray() || type->isStruct()) {
        if (item()->kind != Expression::Kind::List) {
            if (!item()->type)
                check(item());
            if (item()->type == type ||
                (type->isArray() && item()->type->isArray() && converts(item()->type, type)))
                return std::move(list.operands[next++]);
        }
        if (type->isArray())
            for (uint32_t i = 0; i < type->length; ++i)
                fillFrom(type->element);
        else
            for (const Member& member : type->structure->members)
                fillFrom(member.type);
        return made;
    }
    if (!type->isNumeric())
        fail(list, nameOf(type) + " can't be given in a list");
    uint32_t missing = type->size();
    const bool isAlone = next == 0 && list.operands.size() == 1;
    while (missing > 0) {
        ExpressionPtr& value = item();
        if (value->kind == Expression::Kind::List) { // rows of a matrix
            const uint32_t width = type->isMatrix() ? type->columns : missing;
            size_t innerNext = 0;
            made->operands.push_back(fill(fTypes.vector(type->scalar, width), *value, innerNext));
            if (innerNext < value->operands.size())
                fail(*value, "there are more values than " + nameOf(type) + " holds");
            missing -= std::min(missing, width);
            ++next;
            continue;
        }
        if (!value->type)
            check(value);
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
