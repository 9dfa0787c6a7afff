#include "PDF/Font/CMapStm.h"

#include <algorithm>
#include <cstring>

#include "Common/Limits.h"
#include "SDF/Obj.h"

namespace lum::PDF::Fnt {

// The parser's reading of the stream lives in CMapStmParser.cpp.
void ParseCMapStream(CMapStm& cmap, Filters::Filter* data);

CMapStm::CMapStm(SDF::Obj* stm, std::string name, std::unique_ptr<Filters::Filter> data)
    : mp_stream(stm), m_name(std::move(name)) {
    LUM_CHECK(stm && stm->IsStream(), "Invalid CMap: not a stream");
    if (!data) data = stm->GetDecodedStream();
    ParseCMapStream(*this, data.get());
    Finish();
    // The dictionary's UseCMap replaces what a usecmap operator set.
    if (SDF::Obj* use = stm->FindObj("UseCMap")) mp_parent = CMap::Create(use);
}

CMapStm::~CMapStm() = default;

UInt32 CMapStm::StoreValues(const UInt32* values, UInt32 count) {
    LUM_CHECK(m_values.size() + count <= Limits::kMaxCMapValues, "Invalid CMap: too many values");
    const UInt32 offset = static_cast<UInt32>(m_values.size());
    m_values.insert(m_values.end(), values, values + count);
    return offset;
}

void CMapStm::AddSingle(int length, UInt32 code, const UInt32* values, UInt32 count) {
    LUM_CHECK(GetEntryCount() < Limits::kMaxCMapEntries, "Invalid CMap: too many mappings");
    m_tables[length - 1].singles.push_back({code, StoreValues(values, count), count});
}

void CMapStm::AddRange(int length, UInt32 low, UInt32 high, const UInt32* values, UInt32 count) {
    LUM_CHECK(GetEntryCount() + 1 < Limits::kMaxCMapEntries, "Invalid CMap: too many mappings");
    auto& ranges = m_tables[length - 1].ranges;
    ranges.push_back({low, StoreValues(values, count), count});
    ranges.push_back({high, kMarker, 0});
}

size_t CMapStm::GetEntryCount() const {
    size_t n = 0;
    for (const Table& t : m_tables) n += t.singles.size() + t.ranges.size();
    return n;
}

void CMapStm::Finish() {
    // Sorted by code; of several entries for one code the last one made stands, as a store
    // into an ordered map would leave it.
    auto settle = [](std::vector<Entry>& v) {
        auto by_code = [](const Entry& a, const Entry& b) { return a.code < b.code; };
        // Predefined CMaps list their codes in order: most tables need no sort.
        if (!std::is_sorted(v.begin(), v.end(), by_code)) std::stable_sort(v.begin(), v.end(), by_code);
        size_t out = 0;
        for (size_t i = 0; i < v.size(); ++i) {
            if (i + 1 < v.size() && v[i + 1].code == v[i].code) continue;
            v[out++] = v[i];
        }
        v.resize(out);
        v.shrink_to_fit();
    };
    for (Table& t : m_tables) {
        settle(t.singles);
        settle(t.ranges);
    }
    m_values.shrink_to_fit();
}

bool CMapStm::Lookup(int length, UInt32 code, const Entry*& hit, UInt32& delta) const {
    const Table& t = m_tables[length - 1];
    auto below = [](const Entry& e, UInt32 c) { return e.code < c; };
    auto s = std::lower_bound(t.singles.begin(), t.singles.end(), code, below);
    if (s != t.singles.end() && s->code == code) {
        hit = &*s;
        delta = 0;
        return true;
    }
    auto r = std::lower_bound(t.ranges.begin(), t.ranges.end(), code, below);
    if (r == t.ranges.end()) return false;
    if (r->offset == kMarker) {
        // The high end of a range: the entry before it is the low end.
        if (r == t.ranges.begin()) return false;
        const Entry& low = *(r - 1);
        if (low.offset == kMarker) return false;
        hit = &low;
        delta = code - low.code;
        return true;
    }
    if (r->code != code) return false;
    hit = &*r;
    delta = 0;
    return true;
}

UInt32 CMapStm::MapToCID(UInt32 code) const {
    for (int n = 1; n <= 4; ++n) {
        const Entry* hit = nullptr;
        UInt32 delta = 0;
        if (Lookup(n, code, hit, delta)) {
            if (hit->count == 0) return 0;
            return m_values[hit->offset] + (hit->count == 1 ? delta : 0);
        }
    }
    return mp_parent ? mp_parent->MapToCID(code) : 0;
}

int CMapStm::MapToCID(const UInt8* bytes, int length, UInt32& code, UInt32& cid) const {
    UInt32 c = 0;
    for (int n = 1; n <= 4; ++n) {
        // A byte past the end of the string counts as 0.
        c = (c << 8) | (n <= length ? bytes[n - 1] : 0);
        const Entry* hit = nullptr;
        UInt32 delta = 0;
        if (Lookup(n, c, hit, delta)) {
            code = c;
            cid = hit->count == 0 ? 0 : m_values[hit->offset] + (hit->count == 1 ? delta : 0);
            return n;
        }
    }
    if (mp_parent) return mp_parent->MapToCID(bytes, length, code, cid);
    return 1;
}

bool CMapStm::MapToUnicode(UInt32 code, UInt16* units, int capacity, UInt32& length) const {
    for (int n = 1; n <= 4; ++n) {
        const Entry* hit = nullptr;
        UInt32 delta = 0;
        if (!Lookup(n, code, hit, delta)) continue;
        const UInt32 take = std::min<UInt32>(hit->count, capacity > 0 ? UInt32(capacity) : 0);
        for (UInt32 k = 0; k < take; ++k) {
            UInt32 v = m_values[hit->offset + k];
            if (k + 1 == hit->count) v += delta;  // the last unit grows along a range
            units[k] = static_cast<UInt16>(v);
        }
        length = take;
        return true;
    }
    if (mp_parent) return mp_parent->MapToUnicode(code, units, capacity, length);
    length = 0;
    if (capacity >= 1) {
        units[0] = 0xFFFD;
        length = 1;
    }
    return false;
}

bool CMapStm::IsHorizontal() const {
    SDF::Obj* wmode = mp_stream->FindObj("WMode");
    if (wmode && wmode->IsNumber()) return wmode->GetNumber() != 1;
    return m_horizontal;
}

}  // namespace lum::PDF::Fnt
