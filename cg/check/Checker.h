#pragma once

#include "check/LibraryCalls.h"
#include "language/Constants.h"

#include <map>
#include <set>
#include <vector>

namespace orlocg {

/// Finds out what every name stands for and every expression's type, and writes the conversions in that the
/// language makes by itself. Looks only at what an entry function reaches: headers are full of functions that
/// nobody calls, for other stages too. Throws CompileError.
class Checker : private Conversions {
public:
    Checker(Program& program, Stage stage, Diagnostics& diagnostics);

    /// Checks the function of that name, with all that it calls, and the globals that it names.
    Function& check(const std::string& entry);

private:
    using Scope = std::map<std::string, Variable*, std::less<>>;

    [[noreturn]] void failWithoutEntry(const std::string& entry);
    void checkFunction(Function& function);
    void checkGlobal(Variable& global);
    void checkVariable(Variable& variable);
    void checkInitializer(Variable& variable, const char* what);
    void checkStatement(Statement& statement);
    void checkBody(Statement& statement);
    void checkCondition(ExpressionPtr& condition, const char* of);
    void checkReturn(Statement& statement);
    void checkDiscard(Statement& statement);
    void checkSwitch(Statement& statement);
    void declare(Variable& variable);

    void check(ExpressionPtr& expression);
    void checkName(Expression& e);
    [[noreturn]] void failOfMatrices(const Expression& e) const;
    void checkUnary(Expression& e);
    void checkBinary(ExpressionPtr& e);
    void checkAssignment(Expression& e);
    void checkChoice(Expression& e);
    void checkIndex(ExpressionPtr& e);
    void checkMember(ExpressionPtr& e);
    /// Checks what a member or an element is picked of: of that, only the pick is used.
    void checkOwner(ExpressionPtr& e);
    static void noteUse(const Expression& e, const Variable* parameter = nullptr);
    bool checkState(ExpressionPtr& e);
    void checkCall(ExpressionPtr& e);
    void resolveCall(ExpressionPtr& e);
    void makeFetch(Expression& e);
    void checkUserCall(Expression& e, const std::vector<Function*>& candidates);
    void checkMethodCall(Expression& e);
    static bool hasMethod(const Type* type, std::string_view name);
    ExpressionPtr makeThis(const Location& at);
    static bool isOpenFunction(const Function& function);
    const Type* closed(const Type* type, const Type* given);
    Function& closedFor(const Expression& call, Function& function);
    [[noreturn]] void failOpen(const Variable& variable) const;
    void checkConstruct(ExpressionPtr& e);

    void makeLength(Expression& e);
    void makeVectorSwizzle(Expression& e, const Type* of);
    void makeMatrixSwizzle(Expression& e, const Type* of);
    void endSwizzle(Expression& e, const Type* of);

    const Type* lengthFrom(const Type* array, Expression& list);
    ExpressionPtr fillFromAll(const Type* type, Expression& list);
    ExpressionPtr fill(const Type* type, Expression& list, size_t& next);
    ExpressionPtr fillNumbers(ExpressionPtr made, Expression& list, size_t& next);
    ExpressionPtr& itemFor(const Type* type, Expression& list, size_t next);

    Program& fProgram;
    Stage fStage;
    LibraryCalls fLibrary;
    Constants fConstants;
    std::map<std::string, std::vector<Function*>, std::less<>> fFunctions;
    Scope fGlobals;
    std::vector<Scope> fScopes;
    std::set<const Variable*> fCheckedGlobals;
    /// Functions for certain types of parameters, by the one that they are copies of.
    std::map<std::pair<Function*, std::vector<const Type*>>, Function*> fCopies;
    size_t fCopied = 0; ///< tokens
    Function* fFunction = nullptr;
    bool fIsOwner = false; ///< what is checked next is one
    bool fReturns = false; ///< the function somewhere
    int fLoops = 0;
    int fSwitches = 0;
    int fDepth = 0;
    int fGlobalsDepth = 0;
};

} // namespace orlocg
