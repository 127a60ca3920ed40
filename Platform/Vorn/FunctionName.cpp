#include "Vorn/FunctionNameInternal.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vorn {
namespace {

constexpr std::array<std::string_view, 3> kAnonymousNamespaces{"(anonymous namespace)", "{anonymous}", "<unnamed>"};
constexpr std::array<std::string_view, 5> kLambdas{"<lambda", "(anonymous class)", "(lambda", "{lambda", "'lambda"};

bool IsWord(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '~' ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// Walks a signature from left to right and keeps the scopes of the name that it is in.
class SignatureReader {
public:
    explicit SignatureReader(std::string_view text) : m_text(text) {}

    std::string Read() {
        while (m_at < m_text.size() && !m_done)
            Step();
        FinishWord();
        return Join();
    }

private:
    void Step() {
        if (SkipAny(kAnonymousNamespaces))
            return;
        if (StartsAny(kLambdas))
            TakeLambda();
        else if (IsWord(Peek()))
            TakeWord();
        else if (StartsWith("::"))
            TakeScope();
        else if (Peek() == '<')
            SkipBalanced('<', '>');
        else if (Peek() == '(')
            TakeParenthesis();
        else
            TakeSeparator();
    }

    void TakeWord() {
        const std::size_t start = m_at;
        while (m_at < m_text.size() && IsWord(Peek()))
            ++m_at;
        m_word = m_text.substr(start, m_at - start);
        if (m_word == "operator")
            TakeOperator();
    }

    /// The symbol, or the type of a conversion, up to the parameter list.
    void TakeOperator() {
        const std::size_t start = m_at;
        if (StartsWith("()"))
            m_at += 2;
        while (m_at < m_text.size() && Peek() != '(')
            ++m_at;
        m_word += m_text.substr(start, m_at - start);
    }

    /// The function around a lambda has had its parameters; without one, the lambda stands for itself.
    void TakeLambda() {
        m_done = true;
        if (!m_inFunction)
            m_word = "lambda";
    }

    void TakeScope() {
        m_at += 2;
        FinishWord();
    }

    /// A parameter list ends the name, unless a scope follows it; a parenthesis without a name before it encloses
    /// the declarator.
    void TakeParenthesis() {
        if (m_word.empty()) {
            ++m_at;
            return;
        }
        SkipBalanced('(', ')');
        if (m_word == "decltype") {
            m_word.clear();
            return;
        }
        m_inFunction = true;
        const std::size_t scope = ScopeBehindQualifiers();
        m_done = scope == std::string_view::npos;
        m_at = m_done ? m_at : scope;
    }

    /// Position of the "::" behind a parameter list and its "const" or "&"; npos when there is none.
    std::size_t ScopeBehindQualifiers() const {
        std::string_view rest = m_text.substr(m_at);
        for (const std::string_view word : {" const", " volatile", " &&", " &", " noexcept"}) {
            if (rest.starts_with(word))
                rest.remove_prefix(word.size());
        }
        return rest.starts_with("::") ? m_text.size() - rest.size() : std::string_view::npos;
    }

    /// White space and the marks of pointers and references stand behind a type: the name is still to come.
    void TakeSeparator() {
        const bool beforeDecltypeArgument = m_word == "decltype";
        ++m_at;
        if (beforeDecltypeArgument)
            return;
        m_word.clear();
        m_scopes.clear();
    }

    void SkipBalanced(char open, char close) {
        int depth = 0;
        for (; m_at < m_text.size(); ++m_at) {
            const bool arrow = Peek() == '>' && m_at > 0 && m_text[m_at - 1] == '-';
            if (Peek() == open)
                ++depth;
            else if (Peek() == close && !arrow && --depth == 0) {
                ++m_at;
                return;
            }
        }
    }

    void FinishWord() {
        if (!m_word.empty())
            m_scopes.push_back(m_word);
        m_word.clear();
    }

    std::string Join() const {
        if (m_scopes.empty())
            return {};
        const std::string& function = m_scopes.back();
        if (m_scopes.size() == 1 || IsNamespace(m_scopes[m_scopes.size() - 2]))
            return function;
        return m_scopes[m_scopes.size() - 2] + "::" + function;
    }

    static bool IsNamespace(const std::string& scope) { return scope.front() >= 'a' && scope.front() <= 'z'; }

    char Peek() const { return m_text[m_at]; }
    bool StartsWith(std::string_view prefix) const { return m_text.substr(m_at).starts_with(prefix); }
    template <class Texts> bool StartsAny(const Texts& texts) const {
        return std::ranges::any_of(texts, [&](std::string_view text) { return StartsWith(text); });
    }
    template <class Texts> bool SkipAny(const Texts& texts) {
        const auto found = std::ranges::find_if(texts, [&](std::string_view text) { return StartsWith(text); });
        if (found == texts.end())
            return false;
        m_at += found->size();
        return true;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    bool m_done = false;
    bool m_inFunction = false;
    std::string m_word;
    std::vector<std::string> m_scopes;
};

} // namespace

std::string ShortFunctionName(std::string_view signature) {
    return SignatureReader(signature).Read();
}

} // namespace vorn
