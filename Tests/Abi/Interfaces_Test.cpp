#include "Abi/InterfaceSlots.h"
#include "Abi/RunCommand.h"
#include "Support/Golden.h"

#include <gtest/gtest.h>

#include <cxxabi.h>

#include <map>
#include <memory>
#include <sstream>

namespace {

using namespace tolmtest;

std::string Demangled(const char* name) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.get() : name;
}

void ReplaceAll(std::string& text, const std::string& what, const std::string& with) {
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

/// Takes a template argument with all within it out of the text, wherever it begins with `start`.
void RemoveArguments(std::string& text, const std::string& start) {
    for (auto at = text.find(start); at != std::string::npos; at = text.find(start, at)) {
        auto end = at + start.size();
        for (int depth = 1; depth > 0; ++end)
            depth += text[end] == '<' ? 1 : text[end] == '>' ? -1 : 0;
        text.erase(at, end - at);
    }
}

/// The type of an operation as a person writes it, without the arguments that every container has.
std::string Signature(const OperationSlot& operation, const std::string& interface) {
    std::string text = Demangled(operation.type);
    ReplaceAll(text, "std::__cxx11::basic_string<wchar_t, std::char_traits<wchar_t>, std::allocator<wchar_t> >",
               "wstring");
    RemoveArguments(text, ", std::allocator<");
    RemoveArguments(text, ", std::less<");
    ReplaceAll(text, " >", ">");
    ReplaceAll(text, "(" + interface + "::*)", operation.name);
    ReplaceAll(text, "tolm::", "");
    return text;
}

std::string Layout() {
    std::ostringstream text;
    for (const auto& interface : kInterfaces) {
        text << interface.name << "\n";
        for (const auto& operation : interface.operations)
            text << "  " << operation.slot << " " << Signature(operation, interface.name) << "\n";
    }
    return text.str();
}

/// Number of operations behind the destructor, by the size of the virtual table in the library.
std::map<std::string, std::size_t> OperationCounts() {
    std::map<std::string, std::size_t> counts;
    for (const char* library : {TOLM_DATASET_LIBRARY, TOLM_PLATFORM_LIBRARY}) {
        std::istringstream lines(OutputOf(std::string(TOLM_NM) + " -DCS --defined-only " + library));
        const std::string mark = " vtable for ";
        for (std::string line; std::getline(lines, line);) {
            const auto at = line.find(mark);
            if (at != std::string::npos)
                counts[line.substr(at + mark.size())] =
                    std::stoul(line.substr(17, 16), nullptr, 16) / sizeof(void*) - 4;
        }
    }
    return counts;
}

TEST(Abi, TheInterfacesHaveTheOperationsOfTheirGoldenFileInOrder) {
    ExpectGolden("Abi/Interfaces.txt", Layout(), "The binary interface");
}

TEST(Abi, TheListOfOperationsIsWhole) {
    const auto counts = OperationCounts();
    for (const auto& interface : kInterfaces) {
        ASSERT_EQ(counts.count(interface.name), 1U) << interface.name;
        EXPECT_EQ(interface.operations.size(), counts.at(interface.name)) << interface.name;
        for (std::size_t i = 0; i < interface.operations.size(); ++i)
            EXPECT_EQ(interface.operations[i].slot, i + 1) << interface.name << "::" << interface.operations[i].name;
    }
}

} // namespace
