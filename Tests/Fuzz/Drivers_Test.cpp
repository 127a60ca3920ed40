#include "Fuzz/Drivers/Drivers.h"

#include "Fuzz/Support/Mutators.h"
#include "Fuzz/Support/Require.h"
#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>

namespace tolmfuzz {

void PrintTo(const Driver& driver, std::ostream* out) {
    *out << driver.name;
}

namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<fs::path> FilesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    if (fs::exists(folder)) {
        for (const auto& entry : fs::directory_iterator(folder))
            files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

unsigned NumberFrom(const char* variable, unsigned otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

class Drivers : public testing::TestWithParam<Driver> {
protected:
    static fs::path Folder(const char* kind) { return fs::path(TOLM_SOURCE_DIR) / "Fuzz" / kind / GetParam().name; }

    /// False where a property does not hold.
    static testing::AssertionResult Holds(const std::string& input) {
        try {
            GetParam().run(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
            tolmtest::TakeDebugWarnings(); // what the inputs of this kind are reported with
            return testing::AssertionSuccess();
        } catch (const BrokenProperty& broken) {
            return testing::AssertionFailure() << "does not hold: " << broken.what;
        }
    }

    /// An input that fails stays behind, to be looked at and to be kept under Findings.
    static void Try(const std::string& input, unsigned seed, unsigned run) {
        const auto result = Holds(input);
        if (result)
            return;
        const fs::path kept = fs::temp_directory_path() / ("tolm-finding-" + std::string(GetParam().name));
        std::ofstream(kept, std::ios::binary) << input;
        FAIL() << result.message() << "\nTOLM_FUZZ_SEED=" << seed << ", run " << run << ", the input is in " << kept;
    }

    static std::string Changed(const std::vector<std::string>& inputs, Random& random) {
        std::string input = inputs[random() % inputs.size()];
        for (auto changes = 1 + random() % 4; changes > 0; --changes) {
            const std::string& other = inputs[random() % inputs.size()];
            if (GetParam().kind == InputKind::Bytes || random() % 16 == 0)
                input = ChangeBytes(input, inputs, random);
            else if (random() % 8 == 0)
                input = CrossJson(input, other, random);
            else
                input = ChangeJson(input, random);
        }
        return input;
    }
};

TEST_P(Drivers, HoldForTheCorpus) {
    const auto files = FilesIn(Folder("Corpus"));
    EXPECT_FALSE(files.empty());
    for (const auto& file : files)
        EXPECT_TRUE(Holds(ReadFile(file))) << file;
}

TEST_P(Drivers, HoldForWhatWasFoundOnce) {
    for (const auto& file : FilesIn(Folder("Findings")))
        EXPECT_TRUE(Holds(ReadFile(file))) << file;
}

TEST_P(Drivers, HoldForChangedInputs) {
    std::vector<std::string> inputs = {""};
    for (const auto& file : FilesIn(Folder("Corpus")))
        inputs.push_back(ReadFile(file));
    const unsigned seed = NumberFrom("TOLM_FUZZ_SEED", 1);
    const unsigned runs = NumberFrom("TOLM_FUZZ_RUNS", static_cast<unsigned>(GetParam().shortRuns));
    Random random(seed);
    for (unsigned run = 0; run < runs && !HasFatalFailure(); ++run)
        Try(Changed(inputs, random), seed, run);
}

INSTANTIATE_TEST_SUITE_P(Each, Drivers, testing::ValuesIn(kDrivers),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace
} // namespace tolmfuzz
