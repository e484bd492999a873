#include "check/Checker.h"

#include <algorithm>
#include <utility>

namespace orlocg {

namespace {

constexpr int kDeepestCalls = 64;
constexpr int kDeepestGlobals = 500;

/// What "arbvp1", "ps_2_0" and their like are for; nothing: for neither.
std::optional<Stage> stageOfProfile(std::string_view profile) {
    for (const std::string_view start : {"gp4", "gp5", "arb"})
        if (profile.starts_with(start))
            profile.remove_prefix(start.size());
    for (const std::string_view start : {"vp", "vs", "glslv", "hlslv"})
        if (profile.starts_with(start))
            return Stage::Vertex;
    for (const std::string_view start : {"fp", "ps", "glslf", "hlslf"})
        if (profile.starts_with(start))
            return Stage::Fragment;
    return std::nullopt;
}

} // namespace

Checker::Checker(Program& program, Stage stage, Diagnostics& diagnostics)
    : Conversions(program.types, diagnostics), fProgram(program), fStage(stage),
      fLibrary(program.types, diagnostics) {}

Function& Checker::check(const std::string& entry) {
    for (const std::unique_ptr<Function>& function : fProgram.functions)
        if (function->profile.empty() || stageOfProfile(function->profile) == fStage)
            fFunctions[function->name].push_back(function.get());
    for (const std::unique_ptr<Variable>& global : fProgram.globals)
        fGlobals[global->name] = global.get();
    Function* found = nullptr;
    for (Function* candidate : fFunctions[entry])
        if (candidate->body && (!found || found->profile.empty() || !candidate->profile.empty()))
            found = candidate;
    if (!found)
        failWithoutEntry(entry);
    if (!found->unsupported.empty())
        fDiagnostics.fail(found->at, found->unsupported);
    checkFunction(*found);
    return *found;
}

void Checker::failWithoutEntry(const std::string& entry) {
    constexpr size_t kMost = 20;
    std::vector<std::string> there;
    for (const std::unique_ptr<Function>& function : fProgram.functions)
        if (function->body && std::find(there.begin(), there.end(), function->name) == there.end())
            there.push_back(function->name);
    std::string list;
    for (size_t i = 0; i < std::min(there.size(), kMost); ++i)
        list += (i ? ", " : "; there are ") + inQuotes(there[i]);
    fDiagnostics.fail({}, "there is no function " + inQuotes(entry) + " with a body to begin with" + list +
                              (there.size() > kMost ? " and others" : ""));
}

void Checker::checkFunction(Function& function) {
    if (function.isChecked)
        return;
    if (function.isBeingChecked)
        fDiagnostics.fail(function.at, "the function " + inQuotes(function.name) + " calls itself");
    if (++fDepth > kDeepestCalls)
        fDiagnostics.fail(function.at, "functions call each other more than 64 deep");
    function.isBeingChecked = true;
    if (function.origin)
        function.origin->isBeingChecked = true;
    Function* const caller = std::exchange(fFunction, &function);
    std::vector<Scope> callersScopes = std::exchange(fScopes, {Scope()});
    const bool callerReturns = fReturns;
    const int callersLoops = std::exchange(fLoops, 0);
    const int callersSwitches = std::exchange(fSwitches, 0);
    for (const std::unique_ptr<Variable>& parameter : function.parameters) {
        if (isOpen(parameter->type))
            failOpen(*parameter);
        if (!parameter->name.empty() && !(function.owner && parameter == function.parameters[0]))
            declare(*parameter);
        if (parameter->initializer && !parameter->initializer->type) {
            const std::vector<Scope> own = std::exchange(fScopes, {}); // it is the caller's business
            checkInitializer(*parameter, "a parameter's default");
            fScopes = own;
        }
    }
    fReturns = false;
    checkStatement(*function.body);
    if (!fReturns && function.returns->kind != Type::Kind::Void)
        fDiagnostics.fail(function.at, joined({"the function ", inQuotes(function.name), " gives back ",
                                               nameOf(function.returns), ", and has no 'return'"}));
    fScopes = std::move(callersScopes);
    fReturns = callerReturns;
    fLoops = callersLoops;
    fSwitches = callersSwitches;
    fFunction = caller;
    --fDepth;
    function.isBeingChecked = false;
    if (function.origin)
        function.origin->isBeingChecked = false;
    if (function.owner && !function.parameters[0]->isWritten) // so it may be called of what can't be written
        function.parameters[0]->direction = Direction::In;
    function.isChecked = true;
}

void Checker::failOpen(const Variable& variable) const {
    const Type* type = variable.type;
    while (type->isArray() && type->length != 0)
        type = type->element;
    fDiagnostics.fail(variable.at,
                      type->isArray()
                          ? "the length of the array " + inQuotes(variable.name) + " is missing"
                          : "an interface as the type of a variable or of a program's parameter is not "
                            "supported");
}

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
        if (isOpen(variable.type))
            failOpen(variable);
        return;
    }
    checkInitializer(variable, "a value");
}

void Checker::checkInitializer(Variable& variable, const char* what) {
    Expression& first = *variable.initializer;
    if (first.kind == Expression::Kind::List) {
        if (variable.type->isArray() && variable.type->length == 0)
            variable.type = lengthFrom(variable.type, first);
        variable.initializer = fillFromAll(variable.type, first);
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
    if (++fGlobalsDepth > kDeepestGlobals)
        fDiagnostics.fail(global.at, "values of globals name each other more than 500 deep");
    std::vector<Scope> scopes = std::exchange(fScopes, {});
    checkVariable(global);
    fScopes = std::move(scopes);
    --fGlobalsDepth;
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
        for (ExpressionPtr& condition : s.elseConditions)
            checkCondition(condition, "'if'");
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
    case Kind::Switch:
        checkSwitch(s);
        break;
    case Kind::Case:
        fDiagnostics.fail(s.at, "'case' outside 'switch'");
    case Kind::Return:
        checkReturn(s);
        break;
    case Kind::Break:
        if (fLoops == 0 && fSwitches == 0)
            fDiagnostics.fail(s.at, "'break' outside a loop");
        break;
    case Kind::Continue:
        if (fLoops == 0)
            fDiagnostics.fail(s.at, "'continue' outside a loop");
        break;
    case Kind::Discard:
        checkDiscard(s);
        break;
    }
}

void Checker::checkSwitch(Statement& s) {
    check(s.condition);
    if (!s.condition->type->isNumeric() || s.condition->type->size() != 1)
        fail(*s.condition,
             "the value of 'switch' has to be a single number, and is " + nameOf(s.condition->type));
    cast(s.condition, fTypes.scalar(Scalar::Int));
    fScopes.emplace_back();
    ++fSwitches;
    std::set<double> labels;
    bool hasDefault = false;
    for (const std::unique_ptr<Statement>& each : s.statements) {
        if (each->kind != Statement::Kind::Case) {
            checkStatement(*each);
            continue;
        }
        if (!each->condition) {
            if (std::exchange(hasDefault, true))
                fDiagnostics.fail(each->at, "'switch' has two defaults");
            continue;
        }
        check(each->condition);
        const std::optional<Constants::Values> value = fConstants.of(*each->condition);
        if (!value || value->size() != 1)
            fail(*each->condition, "the value of 'case' has to be a constant");
        each->condition->kind = Expression::Kind::Number;
        each->condition->operands.clear();
        each->condition->number = (*value)[0];
        each->condition->type = fTypes.scalar(Scalar::Int);
        if (!labels.insert((*value)[0]).second)
            fail(*each->condition, "'switch' has two cases of this value");
    }
    --fSwitches;
    fScopes.pop_back();
}

void Checker::checkDiscard(Statement& s) {
    if (fStage == Stage::Vertex)
        fDiagnostics.fail(s.at, "a vertex program can't discard");
    if (!s.condition)
        return;
    check(s.condition);
    wantNumbers(*s.condition, "the condition of 'discard'");
    cast(s.condition, fTypes.withScalar(s.condition->type, Scalar::Bool));
}

void Checker::checkReturn(Statement& s) {
    const Type* returns = fFunction->returns;
    fReturns = true;
    if (!s.condition) {
        if (returns->kind != Type::Kind::Void)
            fDiagnostics.fail(s.at, "'return' needs a value here: " + inQuotes(fFunction->name) +
                                        " gives back " + nameOf(returns));
        return;
    }
    check(s.condition);
    if (returns->kind == Type::Kind::Void)
        fDiagnostics.fail(s.at, inQuotes(fFunction->name) + " gives nothing back");
    convert(s.condition, returns, "what is returned");
}

} // namespace orlocg
