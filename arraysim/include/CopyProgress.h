#pragma once
// Simulated time for the work the array does in the background: replication
// copies (replicate, separate, restore) and snapshot work (create, delete,
// restore). The commands only start such work, recording when it began; the
// states move on here, from one call to the next.
//
// With the timing mode "instant" every piece of work started before is done at
// the next call; with "realistic" a copy takes the volume's size at the
// state's copy rate, and the short steps (separating, preparing a snapshot)
// take a second.

#include "ArrayState.h"

namespace arraysim {

class CopyProgress {
public:
    // Moves every pair and snapshot generation on to the state it has reached
    // at nowMillis (milliseconds since the epoch). True when anything changed.
    static bool Advance(ArrayState& state, long long nowMillis);

    // Milliseconds the short steps take in realistic mode.
    static constexpr long long kShortStepMillis = 1000;
};

}  // namespace arraysim
