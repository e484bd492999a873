#pragma once

#include "compile/Ast.h"
#include "compile/Library.h"

#include <map>
#include <set>
#include <vector>

namespace orlocg {

enum class Stage : uint8_t { Vertex, Fragment };

/// Finds out what every name stands for and every expression's type, and writes the conversions in that the
/// language makes by itself. Looks only at what an entry function reaches: headers are full of functions that
/// nobody calls, for other stages too. Throws CompileError.
class Checker {
public:
    Checker(Program& program, Stage stage, Diagnostics& diagnostics);

    /// Checks the function of that name, with all that it calls, and the globals that it names.
    Function& check(const std::string& entry);

private:
    using Scope = std::map<std::string, Variable*, std::less<>>;

    void checkFunction(Function& function);
    void checkGlobal(Variable& global);
    void checkVariable(Variable& variable);
    void checkInitializer(Variable& variable, const char* what);
    void checkStatement(Statement& statement);
    void checkBody(Statement& statement);
    void checkCondition(ExpressionPtr& condition, const char* of);
    void declare(Variable& variable);

    void check(ExpressionPtr& expression);
    void checkName(Expression& e);
    void checkUnary(Expression& e);
    void checkBinary(ExpressionPtr& e);
    void checkAssignment(Expression& e);
    void checkChoice(Expression& e);
    void checkIndex(ExpressionPtr& e);
    void checkMember(ExpressionPtr& e);
    bool checkState(ExpressionPtr& e);
    void checkCall(ExpressionPtr& e);
    void checkUserCall(Expression& e, const std::vector<Function*>& candidates);
    void checkLibraryCall(Expression& e, const LibraryFunction& function);
    void checkMultiply(Expression& e);
    void checkTexture(Expression& e, const TextureCall& call);
    void checkConstruct(ExpressionPtr& e);

    void makeVectorSwizzle(Expression& e, const Type* of);
    void makeMatrixSwizzle(Expression& e, const Type* of);
    ExpressionPtr fill(const Type* type, Expression& list, size_t& next);
    const Type* lengthFrom(const Type* array, Expression& list);

    bool converts(const Type* from, const Type* to) const;
    int costOf(const Type* from, const Type* to) const;
    void convert(ExpressionPtr& e, const Type* to, const char* what);
    void cast(ExpressionPtr& e, const Type* to);
    const Type* common(const Expression& at, const Type* a, const Type* b);
    void wantNumbers(const Expression& e, const char* what) const;
    void wantAssignable(const Expression& e) const;
    void wantCount(const Expression& e, size_t least, size_t most) const;
    [[noreturn]] void fail(const Expression& at, const std::string& message) const;

    Program& fProgram;
    Types& fTypes;
    Stage fStage;
    Diagnostics& fDiagnostics;
    std::map<std::string, std::vector<Function*>, std::less<>> fFunctions;
    Scope fGlobals;
    std::vector<Scope> fScopes;
    std::set<const Variable*> fCheckedGlobals;
    Function* fFunction = nullptr;
    int fLoops = 0;
    int fDepth = 0;
};

} // namespace orlocg
