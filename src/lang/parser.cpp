#include "lang/parser.hpp"

#include "support/numbers.hpp"
#include "support/text.hpp"

#include <algorithm>
#include <cmath>

namespace wavex::lang {
namespace {

enum class Tok { End, Number, String, Name, Op, LParen, RParen, LBracket, RBracket, Comma, Semicolon };

struct Token {
    Tok kind = Tok::End;
    std::string text;  // operator, name or string contents
    double number = 0;
    size_t pos = 0;    // the token is source[pos, end)
    size_t end = 0;
};

struct SyntaxError {
    std::string what;
    size_t pos;
};

bool isNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isNameChar(char c) { return isNameStart(c) || (c >= '0' && c <= '9') || c == '.'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

class Lexer {
public:
    explicit Lexer(std::string_view src) : src_(src) {}

    size_t position() const { return pos_; }
    void seek(size_t pos) { pos_ = pos; }
    std::string_view source() const { return src_; }

    Token next() {
        Token t = scan();
        t.end = t.kind == Tok::End ? t.pos : pos_;
        return t;
    }

private:
    Token scan() {
        skipSpace();
        Token t;
        t.pos = pos_;
        if (pos_ >= src_.size() || src_[pos_] == '#') {
            pos_ = src_.size();
            return t;
        }
        char c = src_[pos_];
        if (isDigit(c) || (c == '.' && pos_ + 1 < src_.size() && isDigit(src_[pos_ + 1]))) {
            size_t n = scanEngineeringNumber(src_.substr(pos_), &t.number);
            t.kind = Tok::Number;
            t.text = src_.substr(pos_, n);
            pos_ += n;
            return t;
        }
        if (isNameStart(c)) {
            size_t b = pos_;
            while (pos_ < src_.size() && isNameChar(src_[pos_])) ++pos_;
            t.kind = Tok::Name;
            t.text = src_.substr(b, pos_ - b);
            return t;
        }
        if (c == '"' || c == '\'') {
            size_t close = src_.find(c, pos_ + 1);
            if (close == std::string_view::npos) throw SyntaxError{"unterminated string", pos_};
            t.kind = Tok::String;
            t.text = src_.substr(pos_ + 1, close - pos_ - 1);
            pos_ = close + 1;
            return t;
        }
        switch (c) {
            case '(': ++pos_; t.kind = Tok::LParen; t.text = "("; return t;
            case ')': ++pos_; t.kind = Tok::RParen; t.text = ")"; return t;
            case '[': ++pos_; t.kind = Tok::LBracket; t.text = "["; return t;
            case ']': ++pos_; t.kind = Tok::RBracket; t.text = "]"; return t;
            case ',': ++pos_; t.kind = Tok::Comma; t.text = ","; return t;
            case ';': ++pos_; t.kind = Tok::Semicolon; t.text = ";"; return t;
            default: break;
        }
        static constexpr std::string_view kTwo[] = {"||", "&&", "==", "!=", "<=", ">="};
        for (std::string_view op : kTwo)
            if (src_.substr(pos_, 2) == op) {
                pos_ += 2;
                t.kind = Tok::Op;
                t.text = op;
                return t;
            }
        if (std::string_view("+-*/%^&<>!=").find(c) != std::string_view::npos) {
            ++pos_;
            t.kind = Tok::Op;
            t.text = std::string(1, c);
            return t;
        }
        throw SyntaxError{std::string("unexpected character '") + c + "'", pos_};
    }

    void skipSpace() {
        while (pos_ < src_.size() && (src_[pos_] == ' ' || src_[pos_] == '\t' || src_[pos_] == '\r' || src_[pos_] == '\n'))
            ++pos_;
    }

    std::string_view src_;
    size_t pos_ = 0;
};

constexpr int kMaxDepth = 256;

class Parser {
public:
    explicit Parser(std::string_view src) : lex_(src) { advance(); }

    std::vector<Statement> line() {
        std::vector<Statement> out;
        for (;;) {
            while (tok_.kind == Tok::Semicolon) advance();
            if (tok_.kind == Tok::End) break;
            out.push_back(statement());
            if (tok_.kind != Tok::Semicolon && tok_.kind != Tok::End) fail("expected ';' or the end of the line");
        }
        return out;
    }

private:
    [[noreturn]] void fail(const std::string& what) { throw SyntaxError{what, tok_.pos}; }

    void advance() {
        prevEnd_ = tok_.end;
        tok_ = lex_.next();
    }

    bool isOp(std::string_view op) const { return tok_.kind == Tok::Op && tok_.text == op; }

    void expect(Tok kind, const char* what) {
        if (tok_.kind != kind) fail(std::string("expected ") + what);
        advance();
    }

    // `help [NAME]`, `functions [PATTERN]` and `vectors`: the word, then its argument as written
    // (a pattern need not be a token) up to ';', '#' or the end of the line.
    bool command(Statement& s) {
        static constexpr std::string_view kCommands[] = {"help", "functions", "vectors"};
        if (tok_.kind != Tok::Name) return false;
        auto word = std::find_if(std::begin(kCommands), std::end(kCommands),
                                 [&](std::string_view c) { return iequals(c, tok_.text); });
        if (word == std::end(kCommands)) return false;
        std::string_view src = lex_.source();
        size_t begin = tok_.pos, pos = lex_.position();
        while (pos < src.size() && (src[pos] == ' ' || src[pos] == '\t')) ++pos;
        // What follows must start an argument, not continue an expression (`help = 2`, `help(1)`).
        if (pos < src.size() && std::string_view(";#*?'\"_").find(src[pos]) == std::string_view::npos && !isNameStart(src[pos]))
            return false;
        size_t end = std::min(src.find_first_of(";#", pos), src.size());
        s.command = *word;
        s.argument = trim(src.substr(pos, end - pos));
        if (s.argument.size() >= 2 && (s.argument.front() == '\'' || s.argument.front() == '"') &&
            s.argument.back() == s.argument.front())
            s.argument = s.argument.substr(1, s.argument.size() - 2);
        s.text = trim(src.substr(begin, end - begin));
        lex_.seek(end);
        advance();
        return true;
    }

    Statement statement() {
        Statement s;
        if (command(s)) return s;
        if (tok_.kind == Tok::Name) {
            // `name = ...` is an assignment; look one token ahead without consuming.
            size_t save = lex_.position();
            Token after = lex_.next();
            lex_.seek(save);
            if (after.kind == Tok::Op && after.text == "=") {
                s.target = tok_.text;
                advance();
                advance();
            }
        }
        size_t begin = tok_.pos;
        s.expression = expression();
        // The expression's text runs up to the next token (a trailing comment starts a token).
        std::string_view text = lex_.source().substr(begin, tok_.pos - begin);
        s.text = trim(text);
        return s;
    }

    std::unique_ptr<Node> expression() {
        if (++depth_ > kMaxDepth) fail("expression nested too deeply");
        auto e = binary(0);
        --depth_;
        return e;
    }

    // The call an operator stands for; it spans from `begin` to the end of the last token read.
    std::unique_ptr<Node> call(const char* name, size_t pos, size_t begin, std::unique_ptr<Node> a,
                               std::unique_ptr<Node> b = nullptr) {
        auto n = std::make_unique<Node>();
        n->kind = Node::Kind::Call;
        n->fromOperator = true;
        n->text = name;
        n->position = pos;
        n->begin = begin;
        n->end = prevEnd_;
        n->children.push_back(std::move(a));
        if (b) n->children.push_back(std::move(b));
        return n;
    }

    // Binary levels, lowest first; each entry maps an operator to its function.
    struct BinaryOp {
        std::string_view op;
        const char* function;
    };
    static constexpr BinaryOp kLevel0[] = {{"||", "_Or"}};
    static constexpr BinaryOp kLevel1[] = {{"&&", "_And"}};
    static constexpr BinaryOp kLevel2[] = {{"==", "_Eq"}, {"!=", "_Ne"}};
    static constexpr BinaryOp kLevel3[] = {{"<", "_Lt"}, {"<=", "_Le"}, {">", "_Gt"}, {">=", "_Ge"}};
    static constexpr BinaryOp kLevel4[] = {{"+", "_Plus"}, {"-", "_Minus"}, {"&", "_Concat"}};
    static constexpr BinaryOp kLevel5[] = {{"*", "_Times"}, {"/", "_Divide"}, {"%", "_Mod"}};
    static constexpr std::span<const BinaryOp> kLevels[] = {kLevel0, kLevel1, kLevel2, kLevel3, kLevel4, kLevel5};

    std::unique_ptr<Node> binary(size_t level) {
        if (level == std::size(kLevels)) return power();
        auto left = binary(level + 1);
        for (;;) {
            const BinaryOp* match = nullptr;
            if (tok_.kind == Tok::Op)
                for (const BinaryOp& b : kLevels[level])
                    if (tok_.text == b.op) match = &b;
            if (!match) return left;
            size_t pos = tok_.pos;
            advance();
            size_t begin = left->begin;
            auto right = binary(level + 1);
            left = call(match->function, pos, begin, std::move(left), std::move(right));
        }
    }

    std::unique_ptr<Node> power() {
        auto base = unary();
        if (!isOp("^")) return base;
        size_t pos = tok_.pos;
        advance();
        if (++depth_ > kMaxDepth) fail("expression nested too deeply");
        auto exponent = power();
        --depth_;
        size_t begin = base->begin;
        return call("_Power", pos, begin, std::move(base), std::move(exponent));
    }

    std::unique_ptr<Node> unary() {
        if (isOp("-") || isOp("!")) {
            bool minus = tok_.text == "-";
            size_t pos = tok_.pos;
            advance();
            if (++depth_ > kMaxDepth) fail("expression nested too deeply");
            auto operand = unary();
            --depth_;
            // A negative number literal is a constant, not a call.
            if (minus && operand->kind == Node::Kind::Constant && operand->value->type == VD_REAL) {
                operand->value = makeScalar(-operand->value->real[0]);
                operand->position = pos;
                operand->begin = pos;
                return operand;
            }
            return call(minus ? "_UMinus" : "_Not", pos, pos, std::move(operand));
        }
        return postfix();
    }

    std::unique_ptr<Node> postfix() {
        auto e = primary();
        while (tok_.kind == Tok::LBracket) {
            size_t pos = tok_.pos;
            advance();
            auto index = expression();
            expect(Tok::RBracket, "']'");
            size_t begin = e->begin;
            e = call("_Index", pos, begin, std::move(e), std::move(index));
        }
        return e;
    }

    std::unique_ptr<Node> primary() {
        size_t begin = tok_.pos;
        bool parenthesised = tok_.kind == Tok::LParen;
        auto n = primaryInner();
        if (!parenthesised) {  // a parenthesised expression keeps the span of its contents
            n->begin = begin;
            n->end = prevEnd_;
        }
        return n;
    }

    std::unique_ptr<Node> primaryInner() {
        auto n = std::make_unique<Node>();
        n->position = tok_.pos;
        switch (tok_.kind) {
            case Tok::Number:
                n->kind = Node::Kind::Constant;
                n->value = makeScalar(tok_.number);
                advance();
                return n;
            case Tok::String:
                n->kind = Node::Kind::Constant;
                n->value = makeStringVector({tok_.text});
                advance();
                return n;
            case Tok::LBracket:
                n->kind = Node::Kind::List;
                advance();
                if (tok_.kind != Tok::RBracket) {
                    n->children.push_back(expression());
                    while (tok_.kind == Tok::Comma) {
                        advance();
                        n->children.push_back(expression());
                    }
                }
                expect(Tok::RBracket, "',' or ']'");
                return n;
            case Tok::LParen: {
                advance();
                auto inner = expression();
                if (tok_.kind == Tok::Comma) {
                    size_t pos = tok_.pos;
                    advance();
                    size_t begin = inner->begin;
                    auto im = expression();
                    inner = call("_Comma", pos, begin, std::move(inner), std::move(im));
                }
                expect(Tok::RParen, "')'");
                return inner;
            }
            case Tok::Name: {
                n->text = tok_.text;
                size_t save = lex_.position();
                Token after = lex_.next();
                if (after.kind != Tok::LParen) {
                    lex_.seek(save);
                    n->kind = Node::Kind::Name;
                    advance();
                    return n;
                }
                if (iequals(n->text, "V") || iequals(n->text, "I")) return probe(std::move(n), lex_.position());
                advance();  // now at the token after '('
                n->kind = Node::Kind::Call;
                if (tok_.kind != Tok::RParen) {
                    n->children.push_back(expression());
                    while (tok_.kind == Tok::Comma) {
                        advance();
                        n->children.push_back(expression());
                    }
                }
                expect(Tok::RParen, "',' or ')'");
                return n;
            }
            case Tok::End: fail("expected a value at the end of the line");
            default: fail("expected a value, not '" + tok_.text + "'");
        }
    }

    // V(node[, node]) and I(device): the node names are taken as written up to ',' or ')'.
    std::unique_ptr<Node> probe(std::unique_ptr<Node> n, size_t from) {
        n->kind = Node::Kind::Probe;
        std::string_view src = lex_.source();
        size_t i = from;
        size_t start = i;
        for (;; ++i) {
            if (i >= src.size()) throw SyntaxError{"expected ')' to close the probe", src.size()};
            char c = src[i];
            if (c != ',' && c != ')') continue;
            std::string_view name = trim(src.substr(start, i - start));
            if (name.empty()) throw SyntaxError{"expected a node name", i};
            n->nodes.emplace_back(name);
            start = i + 1;
            if (c == ')') break;
        }
        lex_.seek(i + 1);
        advance();
        prevEnd_ = i + 1;
        return n;
    }

    Lexer lex_;
    Token tok_;
    size_t prevEnd_ = 0;  // end of the last token consumed
    int depth_ = 0;
};

}  // namespace

std::optional<std::vector<Statement>> parseLine(std::string_view line, std::string* error) {
    try {
        Parser parser(line);
        return parser.line();
    } catch (const SyntaxError& e) {
        if (error) {
            // Show the line with a caret under the place where it went wrong.
            std::string shown(line);
            for (char& c : shown)
                if (c == '\t' || c == '\n' || c == '\r') c = ' ';
            *error = "syntax error: " + e.what + "\n  " + shown + "\n  " + std::string(std::min(e.pos, shown.size()), ' ') + "^";
        }
        return std::nullopt;
    }
}

}  // namespace wavex::lang
