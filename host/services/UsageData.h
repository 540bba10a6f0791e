#pragma once

#include "platform/tnPulseInterface.h"

#include <atomic>
#include <cstdint>

namespace tnhost {

/// Counts how often something worth counting has happened. Stays within the process.
class UsageData final : public tnPulseInterface {
public:
    /// The one object. Never destroyed, as callers keep pointers to it.
    static UsageData &the();

    void notifyActivity() override { m_activities.fetch_add(1, std::memory_order_relaxed); }
    std::uint64_t activities() const { return m_activities.load(std::memory_order_relaxed); }

private:
    UsageData() = default;

    std::atomic<std::uint64_t> m_activities{0};
};

} // namespace tnhost
