#include "CopyProgress.h"

#include <algorithm>

namespace arraysim {

namespace {

// How long a copy of `bytes` takes at the state's rate, in milliseconds.
long long copyMillis(const Timing& timing, std::uint64_t bytes) {
    if (timing.mode != "realistic") return 0;
    const double rate = timing.rateMBps > 0 ? timing.rateMBps : 1.0;
    return static_cast<long long>(static_cast<double>(bytes) / (rate * 1024.0 * 1024.0) * 1000.0);
}

long long shortMillis(const Timing& timing) {
    return timing.mode == "realistic" ? CopyProgress::kShortStepMillis : 0;
}

std::uint64_t volumeBytes(const ArrayState& state, unsigned ldNumber) {
    const LogicalDisk* ld = state.FindLd(ldNumber);
    return ld == nullptr ? 0 : ld->capacity;
}

// The work a pair is doing, and what it becomes when done.
struct PairStep {
    const char* from;
    const char* to;
    bool copies;  // the step copies the volume (else it is a short step)
};

const PairStep kPairSteps[] = {
    {"rpl/exec", "rpl/sync", true},
    {"sep/exec", "separated", false},
    {"rst/exec", "rst/sync", true},
    {"rst/exec (protect)", "rst/sync (protect)", true},
    // A restore in protect mode lets go of the RV by itself once the copy is done.
    {"rst/sync (protect)", "separated", false},
};

bool advancePair(const ArrayState& state, ReplicationPair& pair, long long nowMillis) {
    for (const PairStep& step : kPairSteps) {
        if (pair.syncState != step.from) continue;
        const std::uint64_t bytes = step.copies ? volumeBytes(state, pair.mvNumber) : 0;
        const long long needed = step.copies ? copyMillis(state.timing, bytes) : shortMillis(state.timing);
        const long long elapsed = std::max(0LL, nowMillis - pair.activityStartMillis);
        if (elapsed < needed) {
            if (step.copies && needed > 0) {
                // Progress in whole percent: each step is a change of the
                // logical side, and clients reload on every change.
                const long long percent = elapsed * 100 / needed;
                const std::uint64_t done = bytes / 100 * static_cast<std::uint64_t>(percent);
                if (done == pair.copiedBytes) return false;
                pair.copiedBytes = done;
                return true;
            }
            return false;
        }
        const std::string previous = pair.syncState;
        pair.syncState = step.to;
        pair.copiedBytes = bytes;
        pair.activityStartMillis = pair.activityStartMillis + needed;
        const long long doneSeconds = pair.activityStartMillis / 1000;
        if (pair.syncState == "separated") {
            pair.copyControlState = "-";
            pair.endTime = doneSeconds;
            // The state the pair was active in before it separated; a
            // separation that was asked for recorded it when it began.
            if (previous != "sep/exec") pair.previousActive = previous;
            if (pair.rvMode.empty()) pair.rvAccess = "rw";
            pair.protect = false;
        }
        return true;
    }
    return false;
}

// Snapshot work: what a generation becomes when its step is done.
struct SnapStep {
    const char* from;
    const char* to;
    bool copies;  // restore writes the snapshot's data back; delete discards it
};

const SnapStep kSnapSteps[] = {
    {"snap/preparing", "snap/active", false},
    {"snap/deleting", "snap/inactive", true},
    {"rst/exec", "snap/active", true},
};

bool advanceGeneration(const Timing& timing, SnapshotGeneration& generation, long long nowMillis) {
    for (const SnapStep& step : kSnapSteps) {
        if (generation.snapState != step.from) continue;
        const long long needed = step.copies ? std::max(shortMillis(timing), copyMillis(timing, generation.snapshotDataSize))
                                             : shortMillis(timing);
        if (nowMillis - generation.activityStartMillis < needed) return false;
        generation.snapState = step.to;
        generation.activityStartMillis += needed;
        if (generation.snapState == "snap/inactive") {
            // A deleted snapshot leaves an empty generation behind.
            generation.snapshotDataSize = 0;
            generation.processingDataSize = 0;
            generation.creationTime = 0;
            generation.startTime = 0;
            generation.linkStatus = "unlink";
        } else {
            generation.processingDataSize = 0;
        }
        return true;
    }
    return false;
}

}  // namespace

bool CopyProgress::Advance(ArrayState& state, long long nowMillis) {
    bool changed = false;
    // A step that ends may start the next one (a protect restore separates
    // itself), so go on until nothing moves.
    for (bool moved = true; moved;) {
        moved = false;
        for (ReplicationPair& pair : state.pairs) moved |= advancePair(state, pair, nowMillis);
        for (SnapshotBase& base : state.snapshots)
            for (SnapshotGeneration& generation : base.generations)
                moved |= advanceGeneration(state.timing, generation, nowMillis);
        changed |= moved;
    }
    return changed;
}

}  // namespace arraysim
