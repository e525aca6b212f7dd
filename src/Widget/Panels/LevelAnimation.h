#pragma once

#include <cstdlib>

// A level bar moves one step at a time and every move shares one budget, so a far move takes
// no longer than a near one and the bar keeps pace with the microphone's 40 ms samples.
namespace LevelAnimation {

constexpr int kBudgetMs = 40;

// The pause after each step of a move of delta steps (none once the steps alone use the budget).
inline double stepPauseMs(int delta)
{
    return double(kBudgetMs) / std::abs(delta) - 1;
}

}  // namespace LevelAnimation
