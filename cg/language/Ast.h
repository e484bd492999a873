#pragma once

#include "language/Type.h"
#include "preprocess/Source.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orlocg {

struct Function;
struct Statement;

enum class Direction : uint8_t { In, Out, InOut };

/// A variable, a parameter of a function, or one of the program.
struct Variable {
    std::string name;
    const Type* type = nullptr;
    Location at;
    std::string semantic;
    Direction direction = Direction::In;
    bool isUniform = false;
    bool isVarying = false;
    bool isConst = false;
    bool isStatic = false;
    bool isGlobal = false;
    bool isParameter = false;
    std::unique_ptr<struct Expression> initializer;

    // Set by the checker.
    bool isReferenced = false;       ///< by what the program reaches
    std::set<std::string> partsUsed; ///< what of it is: ".light.color"; "": all
    bool isWritten = false;          ///< a uniform that the program keeps values in, for itself

    /// Whether the program reaches what is at that path below the variable, or a part of it.
    bool uses(std::string_view below) const;
};

/// An expression. The parser fills kind, operator and operands; the checker the type, what names stand for,
/// and the conversions that the language makes by itself.
struct Expression {
    enum class Kind : uint8_t {
        Number,
        Name,
        Unary,   ///< op: "-", "!", "~", "++", "--" (before), "p++", "p--" (behind)
        Binary,  ///< op; also "," and the assignments
        Choice,  ///< condition, value, condition, value ..., value: "a ? b : c ? d : e" is one
        Call,    ///< name and arguments; a function of the program, of the library, or a type's constructor
        Index,   ///< of an array, a vector or a matrix
        Member,  ///< of a struct; the checker makes swizzles of those of numbers
        Swizzle, ///< picks: component numbers; of a matrix row * 4 + column
        List,    ///< { ... }
        State,   ///< of GL: `state` is GLSL
        Convert  ///< to `type`, of the one operand
    };

    Kind kind = Kind::Number;
    Location at;
    std::string_view text; ///< name, operator or member
    int depth = 1;         ///< of the tree below
    std::vector<std::unique_ptr<Expression>> operands;

    const Type* type = nullptr;
    bool isAssignable = false;
    double number = 0.0;
    Variable* variable = nullptr;
    Function* function = nullptr;
    const struct LibraryFunction* library = nullptr;
    const Type* constructs = nullptr; ///< by a call, or by a cast
    std::vector<uint8_t> picks;
    bool isCast = false;   ///< written as (type)
    bool isMethod = false; ///< a call of a function of the first operand's
    std::string state;
};

using ExpressionPtr = std::unique_ptr<Expression>;

struct Statement {
    enum class Kind : uint8_t {
        Block,
        Declaration, ///< of `variables`
        Expression,
        If,  ///< `statements`: bodies; with hasElse one more than conditions
        For, ///< init; condition; step; body
        While,
        DoWhile,
        Switch, ///< `statements`: its body, with the labels
        Case,   ///< a label; `condition`: null for the default's
        Return,
        Break,
        Continue,
        Discard
    };

    Kind kind = Kind::Block;
    Location at;
    std::vector<std::unique_ptr<Statement>> statements; ///< of a block; bodies; of For the init first, if any
    std::vector<std::unique_ptr<Variable>> variables;
    ExpressionPtr condition;                   ///< also what is returned, and what is evaluated
    std::vector<ExpressionPtr> elseConditions; ///< of If: those of "else if"
    ExpressionPtr step;
    bool hasInit = false;
    bool hasElse = false;
};

struct Function {
    std::string name;
    std::string profile; ///< the only ones that it is for; empty: all
    const Type* returns = nullptr;
    std::string semantic;
    Location at;
    size_t tokens = 0; ///< that it was parsed of
    std::vector<std::unique_ptr<Variable>> parameters;
    std::unique_ptr<Statement> body; ///< null: only declared
    std::string unsupported;         ///< why it can't be a program's beginning; empty: it may be
    const Type* owner = nullptr;     ///< of a method; it is the first parameter
    Function* origin = nullptr;      ///< what it is a copy of
    bool isChecked = false;
    bool isBeingChecked = false;
};

/// A copy of a function that nothing has been found out about.
std::unique_ptr<Function> copyOf(const Function& function);

/// What a program is for.
enum class Stage : uint8_t { Vertex, Fragment };

/// A parsed program.
struct Program {
    Types types;
    std::map<std::string, const Type*, std::less<>> typeNames; ///< structs and typedefs
    std::vector<std::unique_ptr<Variable>> globals;            ///< in the order of the source
    std::vector<std::unique_ptr<Function>> functions;          ///< definitions and declarations
    std::vector<std::unique_ptr<Function>> methods;            ///< of structs, and copies of functions
};

} // namespace orlocg
