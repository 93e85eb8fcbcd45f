#include "model/UsageSample.hpp"

#include "base/CheckedMath.hpp"

namespace tallowen {

int64_t UsageSample::totalTokens() const { return checkedAdd(inputTokens, outputTokens); }

}  // namespace tallowen
