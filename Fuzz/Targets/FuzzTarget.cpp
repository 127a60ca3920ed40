#include "Fuzz/Drivers/Drivers.h"

#include "Fuzz/Support/Mutators.h"
#include "Fuzz/Support/Require.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Log.h"
#include "Vorn/Notification.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

// One target of libFuzzer; TOLM_FUZZ_TARGET is the driver's name.

namespace {

using tolmfuzz::Driver;
using tolmfuzz::InputKind;
using tolmfuzz::Random;

const Driver& TheDriver() {
    static const Driver& driver = *std::ranges::find(tolmfuzz::kDrivers, TOLM_FUZZ_TARGET, &Driver::name);
    return driver;
}

std::size_t Return(const std::string& text, std::uint8_t* data, std::size_t size, std::size_t most) {
    if (text.size() > most)
        return size;
    std::ranges::copy(text, data);
    return text.size();
}

} // namespace

extern "C" {

std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
int LLVMFuzzerInitialize(int* argc, char*** argv);
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed);

int LLVMFuzzerInitialize(int*, char***) {
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([](const auto&) {});
    vorn::NotificationUtils::SetHandler([](auto, const auto&, const auto&) {});
    vorn::LogManager::SetSink([](const std::wstring&) {});
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        return TheDriver().run(data, size);
    } catch (const tolmfuzz::BrokenProperty& broken) {
        std::fprintf(stderr, "does not hold: %s\n", broken.what.c_str());
        std::abort();
    }
}

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    Random random(seed);
    const std::string before(data, data + size);
    if (TheDriver().kind == InputKind::Json && random() % 16 != 0) {
        const std::string changed = tolmfuzz::ChangeJson(before, random);
        if (changed != before)
            return Return(changed, data, size, most);
    }
    return LLVMFuzzerMutate(data, size, most);
}

} // extern "C"
