#pragma once

#include "MepDatabase/ComponentCache.h"
#include "MepDatabase/MaterialCache.h"

#include <utility>

namespace tolm {

/// What the readers of one operation read once and share, however many records refer to it.
struct SharedReads {
    explicit SharedReads(wstring componentFilePath) : components(std::move(componentFilePath)) {}

    MaterialCache materials;
    ComponentCache components;
};

} // namespace tolm
