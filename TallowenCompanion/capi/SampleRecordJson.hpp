#pragma once

#include "model/UsageSample.hpp"
#include "store/SampleStore.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace tallowen::capi {

// Samples as they cross to the caller: the UsageSample keys plus "id" (the
// persistent identifier), dates as seconds since 2001, absent values null.
std::string sampleRecordJson(const UsageSample& sample);
std::string sampleRecordsJson(const std::vector<UsageSample>& samples);

// The caller's answers. Throw StoreError when the text is not what was asked
// for, so that a broken answer reads as a failed store, never as data.
UsageSample parseSampleRecord(std::string_view json);
std::vector<UsageSample> parseSampleRecords(std::string_view json);
std::vector<SampleSlot> parseSampleSlots(std::string_view json);

}  // namespace tallowen::capi
