#include "language/Ast.h"

#include <algorithm>

namespace orlocg {

namespace {

ExpressionPtr copyOf(const ExpressionPtr& from) {
    if (!from)
        return nullptr;
    auto made = std::make_unique<Expression>();
    made->kind = from->kind;
    made->at = from->at;
    made->text = from->text;
    made->depth = from->depth;
    made->type = from->type;
    made->number = from->number;
    made->constructs = from->constructs;
    made->isCast = from->isCast;
    made->isMethod = from->isMethod;
    for (const ExpressionPtr& operand : from->operands)
        made->operands.push_back(copyOf(operand));
    return made;
}

std::unique_ptr<Variable> copyOf(const std::unique_ptr<Variable>& from) {
    auto made = std::make_unique<Variable>();
    made->name = from->name;
    made->type = from->type;
    made->at = from->at;
    made->semantic = from->semantic;
    made->direction = from->direction;
    made->isUniform = from->isUniform;
    made->isVarying = from->isVarying;
    made->isConst = from->isConst;
    made->isStatic = from->isStatic;
    made->isGlobal = from->isGlobal;
    made->isParameter = from->isParameter;
    made->initializer = copyOf(from->initializer);
    return made;
}

std::unique_ptr<Statement> copyOf(const std::unique_ptr<Statement>& from) {
    auto made = std::make_unique<Statement>();
    made->kind = from->kind;
    made->at = from->at;
    for (const std::unique_ptr<Statement>& each : from->statements)
        made->statements.push_back(copyOf(each));
    for (const std::unique_ptr<Variable>& each : from->variables)
        made->variables.push_back(copyOf(each));
    made->condition = copyOf(from->condition);
    for (const ExpressionPtr& each : from->elseConditions)
        made->elseConditions.push_back(copyOf(each));
    made->step = copyOf(from->step);
    made->hasInit = from->hasInit;
    made->hasElse = from->hasElse;
    return made;
}

} // namespace

std::unique_ptr<Function> copyOf(const Function& function) {
    auto made = std::make_unique<Function>();
    made->name = function.name;
    made->profile = function.profile;
    made->returns = function.returns;
    made->semantic = function.semantic;
    made->at = function.at;
    for (const std::unique_ptr<Variable>& parameter : function.parameters)
        made->parameters.push_back(copyOf(parameter));
    if (function.body)
        made->body = copyOf(function.body);
    made->owner = function.owner;
    return made;
}

bool Variable::uses(std::string_view below) const {
    const auto isIn = [](std::string_view path, std::string_view whole) {
        return path.starts_with(whole) &&
               (path.size() == whole.size() || path[whole.size()] == '.' || path[whole.size()] == '[');
    };
    return std::any_of(partsUsed.begin(), partsUsed.end(),
                       [&](const std::string& used) { return isIn(below, used) || isIn(used, below); });
}

} // namespace orlocg
