#include "Abi/InterfaceSlots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <sstream>

// Docs/operations.md tells every exported operation. These tests hold it complete, and its test files true.

namespace {

using namespace tolmtest;
using Names = std::vector<std::string>;

/// One row of the page: operations, the classes that they may belong to, and the files that test them.
struct OperationRow {
    Names classes;
    Names operations;
    Names files;
};

constexpr const char* kInnerSection = "## Exported with their classes";

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string SourceFile(const std::string& path) {
    return std::string(TOLM_SOURCE_DIR) + "/" + path;
}

/// What stands between backquotes.
Names Quoted(const std::string& text) {
    Names names;
    for (auto at = text.find('`'); at != std::string::npos;) {
        const auto end = text.find('`', at + 1);
        names.push_back(text.substr(at + 1, end - at - 1));
        at = end == std::string::npos ? end : text.find('`', end + 1);
    }
    return names;
}

Names Cells(const std::string& line) {
    Names cells;
    std::istringstream in(line.substr(1));
    for (std::string cell; std::getline(in, cell, '|');)
        cells.push_back(cell);
    return cells;
}

OperationRow RowOf(const std::string& line, const Names& sectionClasses, bool isInner) {
    const auto cells = Cells(line);
    OperationRow row{sectionClasses, Quoted(cells.at(0)), isInner ? Names() : Quoted(cells.at(2))};
    if (cells[0].find("`: ") != std::string::npos) {
        row.classes = {row.operations.front()};
        row.operations.erase(row.operations.begin());
    }
    return row;
}

bool IsRow(const std::string& line) {
    return line.starts_with("| `");
}

/// The rows of the page. A section's classes stand in its heading and in the text below it.
std::vector<OperationRow> ReadPage() {
    std::vector<OperationRow> rows;
    Names classes;
    bool isInner = false;
    std::istringstream page(Content(SourceFile("Docs/operations.md")));
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("#")) {
            classes.clear();
            isInner = line == kInnerSection;
        }
        if (IsRow(line)) {
            rows.push_back(RowOf(line, classes, isInner));
            continue;
        }
        const auto named = Quoted(line);
        classes.insert(classes.end(), named.begin(), named.end());
    }
    return rows;
}

const std::vector<OperationRow>& Page() {
    static const auto rows = ReadPage();
    return rows;
}

bool Has(const Names& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// An empty class stands for any.
bool IsOnThePage(const std::string& className, const std::string& operation) {
    return std::any_of(Page().begin(), Page().end(), [&](const OperationRow& row) {
        return (className.empty() || Has(row.classes, className)) && Has(row.operations, operation);
    });
}

std::string WithoutNamespace(const std::string& name) {
    for (const char* prefix : {"tolm::", "vorn::"})
        if (name.starts_with(prefix))
            return name.substr(6);
    return name;
}

/// An exported name: its class, empty for a function of its own, and the operation, empty for a class.
struct ExportedName {
    std::string className;
    std::string operation;
};

ExportedName NameOf(const std::string& goldenLine) {
    std::string name = goldenLine.substr(goldenLine.find(' ') + 1);
    for (const char* prefix : {"typeinfo for ", "typeinfo name for ", "vtable for "})
        if (name.starts_with(prefix))
            return {WithoutNamespace(name.substr(std::string(prefix).size())), {}};
    name = WithoutNamespace(name.substr(0, name.find_first_of("([")));
    const auto colons = name.rfind("::");
    if (colons == std::string::npos)
        return {{}, name};
    return {name.substr(0, colons), name.substr(colons + 2)};
}

bool IsMaking(const ExportedName& name) {
    return name.operation == name.className || name.operation.starts_with("~");
}

bool IsWordCharacter(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

bool HasWord(const std::string& text, const std::string& word) {
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        const auto end = at + word.size();
        if ((at == 0 || !IsWordCharacter(text[at - 1])) && (end == text.size() || !IsWordCharacter(text[end])))
            return true;
    }
    return false;
}

TEST(Operations, EverySlotOfAnInterfaceStandsOnThePage) {
    for (const auto& interface : kInterfaces)
        for (const auto& operation : interface.operations)
            EXPECT_TRUE(IsOnThePage(WithoutNamespace(interface.name), operation.name))
                << interface.name << "::" << operation.name;
}

TEST(Operations, EveryExportedSymbolStandsOnThePage) {
    const auto words = Quoted(Content(SourceFile("Docs/operations.md")));
    for (const char* golden : {"Tests/Abi/TolmDataSet.txt", "Tests/Abi/TolmPlatform.txt"}) {
        std::istringstream lines(Content(SourceFile(golden)));
        for (std::string line; std::getline(lines, line);) {
            const auto name = NameOf(line);
            EXPECT_TRUE(name.className.empty() || Has(words, name.className)) << line;
            EXPECT_TRUE(name.operation.empty() || IsMaking(name) || IsOnThePage(name.className, name.operation))
                << line;
        }
    }
}

TEST(Operations, EveryTestFileOnThePageKnowsItsOperation) {
    std::size_t rowsWithFiles = 0;
    for (const auto& row : Page()) {
        Names contents;
        for (const auto& file : row.files) {
            contents.push_back(Content(SourceFile("Tests/" + file)));
            EXPECT_FALSE(contents.back().empty()) << file;
            EXPECT_TRUE(std::any_of(row.operations.begin(), row.operations.end(),
                                    [&](const std::string& operation) { return HasWord(contents.back(), operation); }))
                << file << " knows none of its row's operations";
        }
        rowsWithFiles += row.files.empty() ? 0 : 1;
        for (const auto& operation : row.operations)
            EXPECT_TRUE(row.files.empty() ||
                        std::any_of(contents.begin(), contents.end(),
                                    [&](const auto& content) { return HasWord(content, operation); }))
                << operation;
    }
    EXPECT_GE(rowsWithFiles + 6, Page().size()) << "only what nobody can call goes without a test";
}

} // namespace
