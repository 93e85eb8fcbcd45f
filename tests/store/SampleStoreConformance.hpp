#pragma once

#include "store/SampleStore.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>

namespace tallowen::testing {

// How one SampleStore implementation opens the store kept at a path; an
// implementation joins the conformance suite with INSTANTIATE_TEST_SUITE_P.
struct SampleStoreFactory {
    using Open = std::function<std::unique_ptr<SampleStore>(const std::filesystem::path&)>;
    std::string name;
    Open open;
    Open openReadOnly;  // the same store, refusing every change
};

inline void PrintTo(const SampleStoreFactory& factory, std::ostream* out) { *out << factory.name; }

class SampleStoreConformance : public ::testing::TestWithParam<SampleStoreFactory> {
protected:
    std::filesystem::path storePath() const { return dir_.path() / "store.sqlite"; }
    std::unique_ptr<SampleStore> open() const { return GetParam().open(storePath()); }

    TempDir dir_;
};

}  // namespace tallowen::testing
