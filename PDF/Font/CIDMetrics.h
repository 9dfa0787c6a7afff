#pragma once
// Metrics by CID as a CIDFont's W and W2 arrays give them: groups in array order, each either
// a list (CIDs c, c + 1, ... take the values in turn) or a range (CIDs first to last all take
// one value); the first group that names a CID gives its metrics.
//
// Groups are kept as they come and settled once into runs of CIDs that one group answers, so
// a range over four billion CIDs costs what a range over two does, and a lookup is a binary
// search over the runs. Settling sweeps the group ends in CID order with the open groups in a
// heap by array order: O(g log g) for g groups, whatever they overlap.
#include <algorithm>
#include <cstddef>
#include <functional>
#include <queue>
#include <vector>

#include "Common/Types.h"

namespace lum::PDF::Fnt {

struct VerticalMetrics {
    Int32 w1, vx, vy;
};

template <class V>
class CIDRunTable {
public:
    // CIDs `first` to `last` all take `value`; nothing when first > last.
    void AddRange(UInt32 first, UInt32 last, const V& value) {
        if (first > last) return;
        m_groups.push_back({first, last, UInt32(m_values.size()), false});
        m_values.push_back(value);
    }
    // CIDs `first`, `first` + 1, ... take `values` in turn (cut where the CIDs would wrap).
    void AddList(UInt32 first, const V* values, size_t count) {
        count = std::min<size_t>(count, size_t(0xFFFFFFFFu - first) + 1);
        if (count == 0) return;
        m_groups.push_back({first, UInt32(first + (count - 1)), UInt32(m_values.size()), true});
        m_values.insert(m_values.end(), values, values + count);
    }
    // Values held, counting a range as one.
    size_t Size() const { return m_values.size() + m_groups.size(); }

    // Settles the runs; call once, after the last Add.
    void Finish() {
        struct Event {
            UInt64 at;  // the first CID of a group, or the one past its last
            UInt32 group;
        };
        std::vector<Event> events;
        events.reserve(2 * m_groups.size());
        for (UInt32 g = 0; g < m_groups.size(); ++g) {
            events.push_back({m_groups[g].first, g});
            events.push_back({UInt64(m_groups[g].last) + 1, g});
        }
        std::sort(events.begin(), events.end(),
                  [](const Event& a, const Event& b) { return a.at < b.at; });
        std::vector<bool> open(m_groups.size(), false);
        // The open group first in array order is the one that answers.
        std::priority_queue<UInt32, std::vector<UInt32>, std::greater<UInt32>> heap;
        for (size_t i = 0; i < events.size();) {
            const UInt64 at = events[i].at;
            for (; i < events.size() && events[i].at == at; ++i) {
                const UInt32 g = events[i].group;
                if (at == m_groups[g].first && !open[g]) {
                    open[g] = true;
                    heap.push(g);
                } else {
                    open[g] = false;
                }
            }
            while (!heap.empty() && !open[heap.top()]) heap.pop();
            // A group that is open ends later, so an event follows.
            if (heap.empty() || i == events.size()) continue;
            const UInt32 g = heap.top();
            const UInt32 first = UInt32(at), last = UInt32(events[i].at - 1);
            if (!m_runs.empty() && m_runs.back().group == g && UInt64(m_runs.back().last) + 1 == first)
                m_runs.back().last = last;
            else
                m_runs.push_back({first, last, g});
        }
        m_runs.shrink_to_fit();
    }

    // The value of a CID, or null.
    const V* Find(UInt32 cid) const {
        auto it = std::upper_bound(m_runs.begin(), m_runs.end(), cid,
                                   [](UInt32 c, const Run& r) { return c < r.first; });
        if (it == m_runs.begin()) return nullptr;
        --it;
        if (cid > it->last) return nullptr;
        const Group& g = m_groups[it->group];
        return &m_values[g.offset + (g.list ? cid - g.first : 0)];
    }

    // Calls `f` with each value that answers for some CID.
    template <class F>
    void ForEachAnswer(F f) const {
        for (const Run& r : m_runs) {
            const Group& g = m_groups[r.group];
            if (!g.list) {
                f(m_values[g.offset]);
                continue;
            }
            for (UInt64 c = r.first; c <= r.last; ++c) f(m_values[g.offset + UInt32(c - g.first)]);
        }
    }

private:
    struct Group {
        UInt32 first, last;
        UInt32 offset;  // into m_values
        bool list;
    };
    struct Run {
        UInt32 first, last;
        UInt32 group;
    };
    std::vector<Group> m_groups;
    std::vector<V> m_values;
    std::vector<Run> m_runs;
};

}  // namespace lum::PDF::Fnt
