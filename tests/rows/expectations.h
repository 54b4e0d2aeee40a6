#pragma once

#include "rows/rig.h"

namespace kessil::test {

/// What the library saw, the answer, and the section as the row says.
void ExpectAnswer(Rig &rig, const Row &row);
void ExpectAnswer(Rig &rig, const AdapterRow &row);
void ExpectAnswer(Rig &rig, const CommandRow &row);

/// The section ends ahead of each element of the in-list in turn: the row's refusal each time, and no call.
void ExpectRefusedInput(Rig &rig, const Row &row);
void ExpectRefusedInput(Rig &rig, const AdapterRow &row);

/// The section holds no more than the in-list, and the out-list needs a larger one, which the parent makes.
void ExpectGrowth(Rig &rig, const Row &row);

/// The reply finds no room: the call has taken place, and the row's refusal follows.
void ExpectRefusedOutput(Rig &rig, const Row &row);
void ExpectRefusedOutput(Rig &rig, const AdapterRow &row);
bool CanRefuseOutput(const Row &row);
bool Grows(const Row &row);

/// Nothing gives error texts: that is answered first, and the answer follows all the same, its error text empty.
void ExpectDoubleAnswer(Rig &rig, const AdapterRow &row);

/// Each value of a command that the rig can cut can't be read in turn. `rig` makes a new one for each.
void ExpectCuts(const CommandRow &row);

/// The elements, one behind the other.
Bytes Joined(const std::vector<std::string> &elements);

/// The steps that come before a row, each of which succeeds. Their record is forgotten.
void Take(Rig &rig, const std::vector<Step> &steps);

/// What lies behind an in-list in the section.
inline constexpr std::size_t spare = 4096;

} // namespace kessil::test
