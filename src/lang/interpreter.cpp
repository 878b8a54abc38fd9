#include "wavex/interpreter.hpp"

#include "lang/help.hpp"
#include "lang/parser.hpp"
#include "support/text.hpp"
#include "wavex/dynexport.hpp"
#include "wavex/events.hpp"
#include "wavex/interpreter_scope.hpp"
#include "wavex/options.hpp"
#include "wavex/version.hpp"

#include <cmath>
#include <limits>
#include <numbers>
#include <unordered_map>
#include <utility>

namespace wavex {

using lang::Node;

namespace {

// The interpreter running the current call on this thread: set for the duration of each
// evaluation and restored after it, so nested evaluations (a template's expression) and
// interpreters on other threads each see their own.
thread_local Interpreter* tRunning = nullptr;

YRef<MessageHandler> currentMessageHandler() {
    if (!tRunning) throw DynFuncException("dyn_GetDefaultMessageHandler");
    return tRunning->messages();
}
ScpInterface* currentInterpreter() {
    if (!tRunning) throw DynFuncException("dyn_GetScpInterface");
    return tRunning;
}
const char* identifyBinary() { return kVersionText; }

std::optional<double> namedConstant(std::string_view name) {
    if (iequals(name, "pi")) return std::numbers::pi;
    if (iequals(name, "NaN")) return std::numeric_limits<double>::quiet_NaN();
    if (iequals(name, "Inf")) return std::numeric_limits<double>::infinity();
    return std::nullopt;
}

}  // namespace

InterpreterScope::InterpreterScope(Interpreter* interpreter) : saved_(tRunning) { tRunning = interpreter; }
InterpreterScope::~InterpreterScope() { tRunning = saved_; }

struct Interpreter::Impl {
    std::unordered_map<std::string, VectorPtr, CaseInsensitiveHash, CaseInsensitiveEqual> workspace;
    // The workspace's names, sorted ignoring case.
    std::vector<std::string> names() const {
        std::vector<std::string> r;
        for (auto& [name, v] : workspace) r.push_back(name);
        std::sort(r.begin(), r.end(), [](const std::string& a, const std::string& b) { return stricmp(a, b) < 0; });
        return r;
    }
    bool finished = false;
    ScpParseContext context;

    VectorPtr eval(const Node& n, const YRef<MessageHandler>& messages);
    // eval, with the exceptions that pass through handlers (exhausted memory, an unresolved
    // entry point) reported as the statement's failure.
    VectorPtr guardedEval(const Node& n, const YRef<MessageHandler>& messages) {
        try {
            return eval(n, messages);
        } catch (const CorvaneException& e) {
            messages->error("%s", e.what());
        } catch (const std::bad_alloc&) {
            messages->error("%s", MemoryException("std::vector").what());
        }
        return nullptr;
    }
    VectorPtr list(const Node& n, const YRef<MessageHandler>& messages);
    VectorPtr call(const Node& n, const YRef<MessageHandler>& messages);
    VectorPtr probe(const Node& n, const YRef<MessageHandler>& messages);
    ScpInterface::Bindings bindings;  // names that stand ahead of the workspace during evaluateWith

    VectorPtr lookup(std::string_view name) const {
        for (const auto& [bound, value] : bindings)
            if (iequals(bound, name)) return value;
        auto it = workspace.find(name);
        return it == workspace.end() ? nullptr : it->second;
    }
};

Interpreter::Interpreter(YRef<MessageHandler> messages) : impl_(std::make_unique<Impl>()), messages_(std::move(messages)) {
    impl_->context.interpreter = this;
    // The entry points answer for whichever interpreter is running: bound once for all of them.
    static const bool bound = [] {
        dyn_ProvideEntryPoint("dyn_GetDefaultMessageHandler", &currentMessageHandler);
        dyn_ProvideEntryPoint("dyn_GetScpInterface", &currentInterpreter);
        dyn_ProvideEntryPoint("dyn_IdentifyBinary", &identifyBinary);
        return true;
    }();
    (void)bound;
}

Interpreter::~Interpreter() { finish(); }

void Interpreter::finish() {
    if (impl_->finished) return;
    impl_->finished = true;
    InterpreterScope running(this);
    raiseEvent("ExitCli");
    raiseEvent("Exit");
}

void Interpreter::setVector(std::string_view name, VectorPtr value) { impl_->workspace[std::string(name)] = std::move(value); }

VectorPtr Interpreter::findVector(std::string_view name) const { return impl_->lookup(name); }

std::vector<std::string> Interpreter::vectorNames() const { return impl_->names(); }

std::optional<std::string> Interpreter::substituteExpression(std::string_view expression,
                                                             VecSubstExpressionObject& subst, std::string* error) {
    return lang::substitute(expression, subst, error);
}

void Interpreter::setSafeMode(bool on) { impl_->context.safe = on; }
bool Interpreter::safeMode() const { return impl_->context.safe; }

std::string Interpreter::setOption(std::string_view name, std::string_view value) { return wavex::setOption(name, value); }

VectorPtr Interpreter::evaluate(std::string_view expression) { return evaluateExpression(expression, messages_); }

VectorPtr Interpreter::evaluateExpression(std::string_view text, const YRef<MessageHandler>& messages) {
    InterpreterScope running(this);
    std::string error;
    auto statements = lang::parseLine(text, &error);
    if (!statements) {
        messages->error("%s", error);
        return nullptr;
    }
    if (statements->size() != 1 || (*statements)[0].target || !(*statements)[0].expression) {
        messages->error("%s", "expected one expression");
        return nullptr;
    }
    return impl_->guardedEval(*(*statements)[0].expression, messages);
}

VectorPtr Interpreter::evaluateWith(std::string_view text, Bindings bindings, const YRef<MessageHandler>& messages) {
    Bindings outer = std::exchange(impl_->bindings, bindings);
    VectorPtr value = evaluateExpression(text, messages);
    impl_->bindings = outer;
    return value;
}

bool Interpreter::runLine(std::string_view line, const Printer& print) {
    InterpreterScope running(this);
    std::string error;
    auto statements = lang::parseLine(line, &error);
    bool ok = statements.has_value();
    if (!ok) messages_->error("%s", error);
    else
        for (const lang::Statement& s : *statements) {
            VectorPtr value = s.expression ? impl_->guardedEval(*s.expression, messages_)
                                           : lang::runCommand(s.command, s.argument, *this, *messages_);
            if (!value) {
                ok = false;
                break;
            }
            if (s.target) setVector(*s.target, std::move(value));
            else if (print) print(value, s.text);
        }
    raiseEvent("PostCli");
    return ok;
}

VectorPtr Interpreter::Impl::eval(const Node& n, const YRef<MessageHandler>& messages) {
    switch (n.kind) {
        case Node::Kind::Constant: return n.value;
        case Node::Kind::List: return list(n, messages);
        case Node::Kind::Call: return call(n, messages);
        case Node::Kind::Probe: return probe(n, messages);
        case Node::Kind::Name: {
            if (VectorPtr v = lookup(n.text)) return v;
            if (auto c = namedConstant(n.text)) return makeScalar(*c);
            if (functionTable().find(n.text))
                messages->error("Function '%s' needs its arguments in parentheses", n.text);
            else
                messages->error("Unknown vector '%s'%s", n.text, lang::didYouMean(n.text, names()));
            return nullptr;
        }
    }
    return nullptr;
}

// [a, b, ...]: the elements' values one after another; strings and numbers do not mix.
VectorPtr Interpreter::Impl::list(const Node& n, const YRef<MessageHandler>& messages) {
    std::vector<VectorPtr> parts;
    bool anyString = false, anyNumber = false, anyComplex = false;
    size_t total = 0;
    for (const auto& child : n.children) {
        VectorPtr v = eval(*child, messages);
        if (!v) return nullptr;
        (v->type == VD_STRING ? anyString : anyNumber) = true;
        anyComplex |= v->type == VD_COMPLEX;
        total += v->size();
        parts.push_back(std::move(v));
    }
    if (anyString && anyNumber) {
        messages->error("%s", "A vector literal cannot mix strings and numbers");
        return nullptr;
    }
    auto out = std::make_shared<Vector>();
    if (anyString) {
        out->type = VD_STRING;
        for (const VectorPtr& p : parts) out->str.insert(out->str.end(), p->str.begin(), p->str.end());
    } else if (anyComplex) {
        out->type = VD_COMPLEX;
        out->cplx.reserve(total);
        for (const VectorPtr& p : parts) {
            if (p->type == VD_COMPLEX) out->cplx.append(p->cplx.data(), p->cplx.size());
            else for (double x : p->real) out->cplx.push_back(Complex(x, 0));
        }
    } else {
        out->real.reserve(total);
        for (const VectorPtr& p : parts) out->real.append(p->real.data(), p->real.size());
    }
    if (!parts.empty()) out->phys = parts.front()->phys;
    return out;
}

VectorPtr Interpreter::Impl::call(const Node& n, const YRef<MessageHandler>& messages) {
    if (!n.function) {
        n.function = functionTable().find(n.text);
        if (!n.function && iequals(n.text, "Vec")) {
            // Vec('any name'): a vector whose name is not an identifier.
            if (n.children.size() != 1) {
                messages->error("%s", "Vec takes one argument, the name of a vector");
                return nullptr;
            }
            VectorPtr name = eval(*n.children[0], messages);
            if (!name) return nullptr;
            if (name->type != VD_STRING || name->str.size() != 1) {
                messages->error("%s", "Vec takes one argument, the name of a vector");
                return nullptr;
            }
            std::string text = name->str[0].value_or("");
            if (VectorPtr v = lookup(text)) return v;
            messages->error("Unknown vector '%s'%s", text, lang::didYouMean(text, names()));
            return nullptr;
        }
        if (!n.function) {
            messages->error("Unknown function '%s'%s", n.text, lang::didYouMean(n.text, lang::functionNames()));
            return nullptr;
        }
    }
    VectorPtr local[4];
    std::vector<VectorPtr> many;
    std::span<VectorPtr> args;
    if (n.children.size() <= std::size(local)) {
        args = std::span<VectorPtr>(local, n.children.size());
    } else {
        many.resize(n.children.size());
        args = many;
    }
    for (size_t i = 0; i < n.children.size(); ++i)
        if (!(args[i] = eval(*n.children[i], messages))) return nullptr;
    VectorPtr out;
    if (callFunction(*n.function, args, messages, context, &out) != FUNC_OK) return nullptr;
    return out;
}

// V(node) is the vector "v(node)" as a simulator names it, else the vector "node"; V(a, b) is
// V(a) - V(b); I(device) is "i(device)", else "device#p".
VectorPtr Interpreter::Impl::probe(const Node& n, const YRef<MessageHandler>& messages) {
    bool voltage = iequals(n.text, "V");
    if (n.nodes.size() > (voltage ? 2u : 1u)) {
        messages->error("%s", voltage ? "V(...) takes one or two node names" : "I(...) takes one device name");
        return nullptr;
    }
    auto one = [&](const std::string& node) -> VectorPtr {
        std::string full = std::string(voltage ? "v(" : "i(") + node + ")";
        if (VectorPtr v = lookup(full)) return v;
        std::string bare = voltage ? node : node + "#p";
        if (VectorPtr v = lookup(bare)) return v;
        messages->error("Unknown vector '%s' (no vector '%s' either)", full, bare);
        return nullptr;
    };
    VectorPtr a = one(n.nodes[0]);
    if (!a || n.nodes.size() == 1) return a;
    VectorPtr b = one(n.nodes[1]);
    if (!b) return nullptr;
    const FuncInfo* minus = functionTable().find("_Minus");
    if (!minus) {
        messages->error("Unknown function '%s'", "_Minus");
        return nullptr;
    }
    VectorPtr pair[2] = {a, b}, out;
    if (callFunction(*minus, pair, messages, context, &out) != FUNC_OK) return nullptr;
    return out;
}

}  // namespace wavex
