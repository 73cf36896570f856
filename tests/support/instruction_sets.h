/// Kernels that exist once for each instruction set.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <hwy/targets.h>

namespace quorvex {

/// Calls `check` with the kernels of each instruction set that this machine has, one after the
/// other.
template <class Check>
void ForEachInstructionSet(const Check& check) {
    const auto choose = [](std::int64_t targets) {
        hwy::SetSupportedTargetsForTest(targets);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    };
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        choose(target);
        check();
    }
    choose(0);
}

}  // namespace quorvex
