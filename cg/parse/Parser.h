#pragma once

#include "language/Ast.h"

#include <map>

namespace orlocg {

/// Makes a program of tokens: declarations, statements and expressions as they are written, no names looked
/// up but those of types. Throws CompileError.
class Parser {
public:
    Parser(std::vector<Token> tokens, Program& program, Diagnostics& diagnostics);

    void parse();

private:
    struct Qualifiers {
        bool isUniform = false;
        bool isVarying = false;
        bool isConst = false;
        bool isStatic = false;
        bool isPacked = false;
        bool isTypedef = false;
        bool isIn = false;
        bool isOut = false;
    };

    struct Constant {
        double value;
        bool isInt;
    };

    /// Counts how deep things are nested for as long as it lives.
    class Nesting {
    public:
        explicit Nesting(Parser& parser);
        ~Nesting() { --fParser.fDepth; }
        Nesting(const Nesting&) = delete;
        Nesting& operator=(const Nesting&) = delete;

    private:
        Parser& fParser;
    };

    const Token& peek(size_t ahead = 0) const;
    Token take();
    bool takeIf(std::string_view spelling);
    void expect(std::string_view spelling, const char* after);
    std::string takeName(const char* what);
    [[noreturn]] void unexpected(const char* wanted);

    void external();
    Qualifiers qualifiers();
    const Type* type(Qualifiers& qualifiers);
    const Type* typeNamed(std::string_view name) const;
    bool startsType(size_t ahead = 0) const { return peek(ahead).isName() && typeNamed(peek(ahead).text); }
    const Type* structure();
    const Type* withDimensions(const Type* element, bool isPacked);
    std::string semanticIfAny();
    std::string statePath();
    void skipAnnotation();
    void skipTo(std::string_view end);
    bool skipEffect();
    bool skipOtherStage();
    std::unique_ptr<Variable> declarator(const Type* base, const Qualifiers& qualifiers);
    std::vector<std::unique_ptr<Variable>> declarators(const Type* base, const Qualifiers& qualifiers);
    std::unique_ptr<Function> function(const Type* returns, const Token& name, const std::string& profile,
                                       const Type* owner);
    void methodOutside(const Type* returns);
    bool startsInterface() const { return peek().is("interface") && peek(1).isName() && peek(2).is("{"); }
    bool constantBuffer();
    bool qualifiesWhatFollows() const;
    bool takeIdleQualifier();
    std::unique_ptr<Variable> parameter();

    std::unique_ptr<Statement> statement();
    std::unique_ptr<Statement> block();
    std::unique_ptr<Statement> declaration();
    bool startsDeclaration() const;
    std::unique_ptr<Statement> switchStatement();
    std::unique_ptr<Statement> branches(std::unique_ptr<Statement> made);
    std::unique_ptr<Statement> loop();
    std::unique_ptr<Statement> make(Statement::Kind kind) const;

    ExpressionPtr make(Expression::Kind kind, const Token& at) const;
    void adopt(Expression& parent, ExpressionPtr operand) const;
    ExpressionPtr expression();
    ExpressionPtr assignment();
    ExpressionPtr choice();
    ExpressionPtr binary(int least);
    ExpressionPtr unary();
    ExpressionPtr postfix();
    ExpressionPtr primary();
    ExpressionPtr number();
    static bool takeSuffix(std::string_view suffix, Scalar& scalar);
    ExpressionPtr initializer();
    ExpressionPtr construct(const Type* type, const Token& at);
    void arguments(Expression& call);
    uint32_t arrayLength();
    std::optional<Constant> constantOf(const Expression& expression) const;
    static Constant typed(double value, const Type* type);

    std::vector<Token> fTokens;
    size_t fNext = 0;
    int fDepth = 0;
    Program& fProgram;
    Diagnostics& fDiagnostics;
    std::map<std::string, Constant, std::less<>> fConstants; ///< what lengths of arrays may name
};

} // namespace orlocg
