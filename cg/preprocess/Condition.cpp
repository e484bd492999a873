#include "preprocess/Condition.h"

#include "preprocess/Operators.h"

#include <charconv>

namespace orlocg {

namespace {

constexpr int kDeepestCondition = 200;

class Evaluator {
public:
    Evaluator(const std::vector<Token>& tokens, const Location& at, Diagnostics& diagnostics)
        : fTokens(tokens), fAt(at), fDiagnostics(diagnostics) {}

    long long evaluate() {
        const long long value = choice();
        if (fNext < fTokens.size())
            wrong();
        return value;
    }

private:
    [[noreturn]] void wrong() const {
        const bool atEnd = fNext >= fTokens.size();
        fDiagnostics.fail(atEnd ? fAt : fTokens[fNext].at,
                          atEnd ? "the expression of #if ends too early"
                                : inQuotes(fTokens[fNext].text) + " makes no sense in the expression of #if");
    }

    bool take(std::string_view spelling) {
        const bool fits = fNext < fTokens.size() && fTokens[fNext].is(spelling);
        fNext += fits ? 1 : 0;
        return fits;
    }

    long long choice() {
        const long long condition = binary(1);
        if (!take("?"))
            return condition;
        const long long yes = choice();
        if (!take(":"))
            wrong();
        const long long no = choice();
        return condition ? yes : no;
    }

    long long binary(int least) {
        long long left = unary();
        for (;;) {
            const BinaryOperator* found = fNext < fTokens.size() ? binaryOperatorOf(fTokens[fNext]) : nullptr;
            if (!found || found->precedence < least)
                return left;
            const Location at = fTokens[fNext++].at;
            // What && and || don't need may divide by zero.
            const bool isIdle = (found->spelling == "&&" && !left) || (found->spelling == "||" && left);
            fIdle += isIdle ? 1 : 0;
            const long long right = binary(found->precedence + 1);
            fIdle -= isIdle ? 1 : 0;
            left = apply(found->spelling, left, right, at);
        }
    }

    long long apply(std::string_view op, long long left, long long right, const Location& at) const {
        const auto l = static_cast<unsigned long long>(left);
        const auto r = static_cast<unsigned long long>(right);
        if (op == "/" || op == "%") {
            if (right == 0 && fIdle == 0)
                fDiagnostics.fail(at, "the expression of #if divides by zero");
            if (right == 0 || right == -1)
                return op == "%" || right == 0 ? 0 : static_cast<long long>(0U - l);
            return op == "/" ? left / right : left % right;
        }
        if (op == "*")
            return static_cast<long long>(l * r);
        if (op == "+")
            return static_cast<long long>(l + r);
        if (op == "-")
            return static_cast<long long>(l - r);
        if (op == "<<")
            return r < 64 ? static_cast<long long>(l << r) : 0;
        if (op == ">>")
            return r < 64 ? left >> right : 0;
        if (op == "<")
            return left < right;
        if (op == ">")
            return left > right;
        if (op == "<=")
            return left <= right;
        if (op == ">=")
            return left >= right;
        if (op == "==")
            return left == right;
        if (op == "!=")
            return left != right;
        if (op == "&")
            return left & right;
        if (op == "^")
            return left ^ right;
        if (op == "|")
            return left | right;
        return op == "&&" ? left && right : left || right;
    }

    long long unary() {
        if (++fDepth > kDeepestCondition)
            fDiagnostics.fail(fAt, "the expression of #if is nested too deep");
        long long value = 0;
        if (take("!"))
            value = !unary();
        else if (take("-"))
            value = static_cast<long long>(0U - static_cast<unsigned long long>(unary()));
        else if (take("+"))
            value = unary();
        else if (take("~"))
            value = ~unary();
        else
            value = primary();
        --fDepth;
        return value;
    }

    long long primary() {
        if (take("(")) {
            const long long value = choice();
            if (!take(")"))
                wrong();
            return value;
        }
        if (fNext >= fTokens.size())
            wrong();
        const Token& token = fTokens[fNext];
        if (token.isName()) {
            ++fNext;
            return token.is("true") ? 1 : 0;
        }
        if (token.kind != TokenKind::Number)
            wrong();
        const long long value = numberOf(token);
        ++fNext;
        return value;
    }

    long long numberOf(const Token& token) const {
        std::string_view text = token.text;
        int base = 10;
        if (text.starts_with("0x") || text.starts_with("0X")) {
            base = 16;
            text.remove_prefix(2);
        } else if (text.size() > 1 && text.starts_with('0')) {
            base = 8;
        }
        unsigned long long value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
        const std::string_view suffix = text.substr(static_cast<size_t>(end - text.data()));
        if (error != std::errc() || suffix.find_first_not_of("uUlL") != suffix.npos)
            wrong();
        return static_cast<long long>(value);
    }

    const std::vector<Token>& fTokens;
    Location fAt;
    Diagnostics& fDiagnostics;
    size_t fNext = 0;
    int fIdle = 0;
    int fDepth = 0;
};

} // namespace

long long evaluateCondition(const std::vector<Token>& tokens, const Location& at, Diagnostics& diagnostics) {
    return Evaluator(tokens, at, diagnostics).evaluate();
}

} // namespace orlocg
