#include "Vorn/FunctionNameInternal.h"

#include "Vorn/DebugMessage.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tolm {
namespace {

std::string Short(const char* signature) {
    return vorn::ShortFunctionName(signature);
}

struct Hidden {
    static std::string Static() { return Short(VORN_FUNCTION); }
    std::string Const() const { return Short(VORN_FUNCTION); }
};

std::string HiddenFree(const std::string&) {
    return Short(VORN_FUNCTION);
}

template <class T> T Passed(T value, std::string& name) {
    name = Short(VORN_FUNCTION);
    return value;
}

} // namespace

template <class T> struct NamedSet {
    explicit NamedSet(std::string* destroyed = nullptr) : m_made(Short(VORN_FUNCTION)), m_destroyed(destroyed) {}
    ~NamedSet() {
        if (m_destroyed != nullptr)
            *m_destroyed = Short(VORN_FUNCTION);
    }
    std::map<int, std::vector<T>> Add(std::string& name, std::function<void(int)>) const {
        name = Short(VORN_FUNCTION);
        return {};
    }
    std::string operator()(int) const { return Short(VORN_FUNCTION); }
    std::string operator<<(int) const { return Short(VORN_FUNCTION); }
    std::string operator<(int) const { return Short(VORN_FUNCTION); }
    std::string operator[](int) const { return Short(VORN_FUNCTION); }
    std::string operator->*(int) const { return Short(VORN_FUNCTION); }
    explicit operator bool() const {
        m_conversion = Short(VORN_FUNCTION);
        return true;
    }
    std::string InLambda(int x) const {
        const auto lambda = [&](const std::string& prefix) { return prefix + Short(VORN_FUNCTION); };
        return x > 0 ? lambda("") : "";
    }
    std::string InNestedLambda() {
        return [this]() mutable -> std::string {
            const auto inner = [] { return Short(VORN_FUNCTION); };
            return inner() + (m_destroyed == nullptr ? "" : " destroyed");
        }();
    }
    std::string Take() && noexcept { return Short(VORN_FUNCTION); }
    void (*ReturnsFunction(std::string& name))(char) {
        name = Short(VORN_FUNCTION);
        return nullptr;
    }
    decltype(auto) Deduced() { return Short(VORN_FUNCTION); }

    std::string m_made;
    std::string* m_destroyed;
    mutable std::string m_conversion;
};

struct Outermost {
    struct Innermost {
        static std::string Name() { return Short(VORN_FUNCTION); }
    };
};

std::string FreeInNamespace(int (&)[3]) {
    return Short(VORN_FUNCTION);
}

std::string FreeWithLambda() {
    return [](int) { return Short(VORN_FUNCTION); }(1);
}

const auto g_lambdaOutsideOfFunctions = [](int) { return Short(VORN_FUNCTION); };

TEST(FunctionName, MemberIsNamedWithItsClass) {
    EXPECT_EQ(Hidden::Static(), "Hidden::Static");
    EXPECT_EQ(Hidden().Const(), "Hidden::Const");
    EXPECT_EQ(NamedSet<int>().Take(), "NamedSet::Take");
    EXPECT_EQ(NamedSet<int>().Deduced(), "NamedSet::Deduced");
}

TEST(FunctionName, TemplateArgumentsParametersAndReturnTypeAreLeftOut) {
    std::string name;
    NamedSet<std::string>().Add(name, {});
    EXPECT_EQ(name, "NamedSet::Add");
    Passed<std::map<int, int>>({}, name);
    EXPECT_EQ(name, "Passed");
    NamedSet<int>().ReturnsFunction(name);
    EXPECT_EQ(name, "NamedSet::ReturnsFunction");
}

TEST(FunctionName, FreeFunctionStandsAlone) {
    int three[3]{};
    EXPECT_EQ(FreeInNamespace(three), "FreeInNamespace");
    EXPECT_EQ(HiddenFree(""), "HiddenFree");
}

TEST(FunctionName, ConstructorAndDestructorAreNamed) {
    std::string destroyed;
    { EXPECT_EQ(NamedSet<int>(&destroyed).m_made, "NamedSet::NamedSet"); }
    EXPECT_EQ(destroyed, "NamedSet::~NamedSet");
}

TEST(FunctionName, OperatorsKeepTheirSymbols) {
    const NamedSet<int> set;
    EXPECT_EQ(set(1), "NamedSet::operator()");
    EXPECT_EQ(set << 1, "NamedSet::operator<<");
    EXPECT_EQ(set < 1, "NamedSet::operator<");
    EXPECT_EQ(set[1], "NamedSet::operator[]");
    EXPECT_EQ(set->*1, "NamedSet::operator->*");
    EXPECT_TRUE(static_cast<bool>(set));
    EXPECT_EQ(set.m_conversion, "NamedSet::operator bool");
}

TEST(FunctionName, OfALambdaTheEnclosingFunctionIsNamed) {
    EXPECT_EQ(NamedSet<int>().InLambda(1), "NamedSet::InLambda");
    EXPECT_EQ(NamedSet<int>().InNestedLambda(), "NamedSet::InNestedLambda");
    EXPECT_EQ(FreeWithLambda(), "FreeWithLambda");
    EXPECT_EQ(g_lambdaOutsideOfFunctions(1), "lambda");
}

TEST(FunctionName, OfANestedClassTheInnermostIsNamed) {
    EXPECT_EQ(Outermost::Innermost::Name(), "Innermost::Name");
}

struct Spelling {
    const char* signature;
    const char* name;
};

// What one compiler writes must be understood where the other one runs the tests.
constexpr Spelling kSpellings[] = {
    {"bool tolm::MepQbaseUtil::WriteMaterial(std::wstring, std::wstring)", "MepQbaseUtil::WriteMaterial"},
    {"virtual bool tolm::{anonymous}::A::F(int) const", "A::F"},
    {"static int tolm::(anonymous namespace)::A::G()", "A::G"},
    {"void tolm::Set<T>::Call(F) [with F = main()::<lambda()>; T = int]", "Set::Call"},
    {"void tolm::Set<int>::Call(F) [T = int, F = (lambda at a.cpp:21:189)]", "Set::Call"},
    {"tolm::Set<int>::L() const::<lambda(int)>::<lambda()>", "Set::L"},
    {"tolm::Set<int>::L() const::<lambda()> mutable", "Set::L"},
    {"auto tolm::Set<int>::L()::(anonymous class)::operator()(int) const [T = int]", "Set::L"},
    {"auto tolm::A::L()::(lambda at a.cpp:3:4)::operator()() const", "A::L"},
    {"void tolm::Set<T>::L() const::Local::M() [with T = int]", "Local::M"},
    {"void (* tolm::Set<T>::Ptr(int))(char) [with T = int]", "Set::Ptr"},
    {"void (*tolm::Set<int>::Ptr(int) [T = int])(char)", "Set::Ptr"},
    {"std::map<int, std::vector<T> > tolm::Set<T>::Add(const T&, std::function<void(int)>) const [with T = int]",
     "Set::Add"},
    {"std::function<auto () -> int> tolm::A::F()", "A::F"},
    {"tolm::Set<T>::operator std::vector<int>() const [with T = int]", "Set::operator std::vector<int>"},
    {"bool tolm::A::operator==(const tolm::A&) const", "A::operator=="},
    {"int main()", "main"},
    {"InitializeAddin", "InitializeAddin"},
    {"bool CQbase::openDatabase(const wchar_t*)", "CQbase::openDatabase"},
    {"", ""},
    {"(((", ""},
    {"a<b<c", "a"},
    {"::", ""},
    {"operator", "operator"},
};

TEST(FunctionName, BothCompilersSpellingsAreUnderstood) {
    for (const Spelling& spelling : kSpellings)
        EXPECT_EQ(vorn::ShortFunctionName(spelling.signature), spelling.name) << spelling.signature;
}

} // namespace tolm
