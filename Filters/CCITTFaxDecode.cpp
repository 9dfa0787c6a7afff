#include "Filters/CCITTFaxDecode.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"

// A run length that can't be. The condition names the computation that went negative.
#define LUM_FAX_CHECK_RUN(ok, condition)                                                     \
    do {                                                                                     \
        if (!(ok)) [[unlikely]]                                                              \
            throw ::lum::Common::Exception(condition, __LINE__, __FILE__, LUM_FUNCTION,      \
                                           "Bad stream");                                    \
    } while (0)

namespace lum::Filters {

using namespace Fax;

namespace {

// Pixels. Make-up codes of one run add up to at most this; a run that long only comes from
// garbage, and the bound keeps positions far from integer overflow.
constexpr int kMaxRun = 1 << 24;

// Sets the bits [x0, x1) of a row to `value` (0 or 1), most significant bit first.
void FillBits(UInt8* row, int x0, int x1, int value) {
    if (x0 >= x1) return;
    const UInt8 fill = value ? 0xFF : 0x00;
    int first = x0 >> 3, last = (x1 - 1) >> 3;
    const UInt8 head = static_cast<UInt8>(0xFF >> (x0 & 7));
    const UInt8 tail = static_cast<UInt8>(0xFF << (7 - ((x1 - 1) & 7)));
    if (first == last) {
        const UInt8 mask = head & tail;
        row[first] = static_cast<UInt8>((row[first] & ~mask) | (fill & mask));
        return;
    }
    row[first] = static_cast<UInt8>((row[first] & ~head) | (fill & head));
    if (last - first > 1) std::memset(row + first + 1, fill, size_t(last - first - 1));
    row[last] = static_cast<UInt8>((row[last] & ~tail) | (fill & tail));
}

}  // namespace

CCITTFaxDecode::CCITTFaxDecode(std::unique_ptr<Filter> input, const CCITTFaxParams& p)
    : BufFilter(std::move(input), 0, true),
      m_K(p.k),
      m_EndOfLine(p.end_of_line),
      m_EncodedByteAlign(p.encoded_byte_align),
      m_Columns(0),
      m_Rows(p.rows),
      m_EndOfBlock(p.end_of_block || p.rows == 0),
      m_BlackIs1(p.black_is_1),
      // Damaged rows can only be counted where rows are delimited by end-of-line codes.
      m_DamagedRowsBeforeError(p.end_of_line && p.k >= 0 ? p.damaged_rows_before_error : 0),
      m_white(WhiteCodes()),
      m_black(BlackCodes()),
      m_modes(ModeCodes()) {
    LUM_CHECK(p.columns >= 0 && p.columns <= Limits::kMaxFaxColumns,
              "CCITTFaxDecode Columns out of range");
    m_Columns = static_cast<int>(p.columns);
    m_row_bytes = (size_t(m_Columns) + 7) / 8;
    AllocateBuffer(m_row_bytes);
    // A row holds at most Columns + 2 runs while it is decoded, and three more when it is
    // completed; reserving them once keeps the per-row work free of allocation.
    m_cur.reserve(size_t(m_Columns) + 8);
    m_ref.reserve(size_t(m_Columns) + 8);
    StartState();
}

CCITTFaxDecode::~CCITTFaxDecode() = default;

void CCITTFaxDecode::StartState() {
    m_acc = 0;
    m_nbits = 0;
    m_input_end = false;
    m_rows_done = 0;
    m_damaged = 0;
    m_repeated_bytes = 0;
    m_next_2d = m_K < 0;
    m_row_damaged = false;
    m_end = false;
    // The row above the first is all white: no change before the end.
    m_ref.assign(3, m_Columns);
    // Until a row is decoded, the row that an early end repeats is white.
    std::memset(m_buf_begin, m_BlackIs1 ? 0x00 : 0xFF, m_row_bytes);
}

void CCITTFaxDecode::Reset() {
    BufFilter::Reset();
    GiveBack();
    StartState();
}

int CCITTFaxDecode::NextByte() {
    if (m_in_pos == m_in_size) {
        if (!m_attached) return -1;
        if (m_in_size) m_attached->Consume(m_in_size);
        m_in_pos = 0;
        m_in_size = m_attached->Size();
        if (m_in_size == 0) return -1;
        m_in = m_attached->Begin();
    }
    return m_in[m_in_pos++];
}

bool CCITTFaxDecode::Need(int n) {
    while (m_nbits < n) {
        if (m_input_end) return false;
        const int b = NextByte();
        if (b < 0) {
            m_input_end = true;
            return false;
        }
        m_acc |= UInt64(b) << (56 - m_nbits);
        m_nbits += 8;
    }
    return true;
}

void CCITTFaxDecode::GiveBack() {
    if (!m_attached || m_in_size == 0) return;
    // Whole bytes held but not decoded yet, as far as they are in the current window.
    const size_t unused = std::min(size_t(m_nbits) / 8, m_in_pos);
    m_attached->Consume(m_in_pos - unused);
    m_nbits -= int(unused * 8);
    m_acc = m_nbits ? m_acc & ~(~UInt64(0) >> m_nbits) : 0;
    m_in = nullptr;
    m_in_size = m_in_pos = 0;
}

void CCITTFaxDecode::AttachFilter(std::unique_ptr<Filter> filter) {
    GiveBack();
    m_attached = std::move(filter);
}

std::unique_ptr<Filter> CCITTFaxDecode::ReleaseAttachedFilter() {
    GiveBack();
    return std::move(m_attached);
}

void CCITTFaxDecode::Flush() {
    GiveBack();
    if (m_attached) m_attached->Flush();
}

bool CCITTFaxDecode::SkipEol() {
    for (;;) {
        if (!Need(1)) return false;
        if (m_acc == 0) {  // every bit held is zero
            m_acc = 0;
            m_nbits = 0;
            continue;
        }
        Drop(std::countl_zero(m_acc) + 1);
        return true;
    }
}

int CCITTFaxDecode::ReadBit() {
    if (!Need(1)) return 1;
    const int bit = static_cast<int>(Peek(1));
    Drop(1);
    return bit;
}

size_t CCITTFaxDecode::Process() {
    for (;;) {
        if (m_end) {
            // After an early end the last row repeats until Rows, within a bound on the bytes
            // so made up.
            if (m_Rows < 1 || m_rows_done >= m_Rows) return 0;
            if (m_repeated_bytes >= Limits::kMaxFaxRepeatedBytes) return 0;
            m_repeated_bytes += m_row_bytes;
            ++m_rows_done;
            return m_row_bytes;
        }
        if (m_Rows >= 1 && m_rows_done == m_Rows) return 0;

        // An end-of-line code in front of the row.
        int eols = 0;
        Need(11);
        if (m_nbits == 0) {
            m_end = true;
            continue;
        }
        if (Peek(11) == 0) {
            if (!SkipEol()) {  // the data ends in zeros: fill
                m_end = true;
                continue;
            }
            eols = 1;
        }
        if (m_K > 0) m_next_2d = ReadBit() == 0;

        // More end-of-line codes: the end of the block (EOFB) or of the page (RTC).
        if (m_EndOfBlock && eols > 0) {
            while (eols < 7 && Need(11) && Peek(11) == 0) {
                if (!SkipEol()) {
                    m_end = true;
                    break;
                }
                ++eols;
                if (m_K > 0) m_next_2d = ReadBit() == 0;
            }
            if (m_end || eols >= 2) {
                m_end = true;
                return 0;
            }
        }
        // A mixed stream must start with a one-dimensional row.
        if (m_rows_done == 0 && m_K > 0 && m_next_2d) return 0;

        DecodeRow();
        ++m_rows_done;
        if (m_EncodedByteAlign && !m_EndOfLine) Drop(m_nbits & 7);
        return m_row_bytes;
    }
}

void CCITTFaxDecode::DecodeRow() {
    m_cur.clear();
    m_row_damaged = false;
    int a0 = 0;
    const RowEnd end = m_next_2d ? DecodeRow2D(a0) : DecodeRow1D(a0);
    if (end == e_row_data_end) {
        m_end = true;
    } else if (end != e_row_done) {
        Damage();
        // An end-of-line code stops the row where it stands and starts the next one. After
        // other faults a stream with end-of-line codes finds its way back at the next one;
        // a pure two-dimensional stream has none and goes on behind the fault.
        if (end == e_row_bad && m_K >= 0 && !m_end) Resync();
    }
    CompleteRow(a0);
    PaintRow();
    MakeReference();
}

bool CCITTFaxDecode::StoreRun(int pos) {
    if (m_cur.size() >= size_t(m_Columns) + 2) return false;
    m_cur.push_back(pos);
    return true;
}

CCITTFaxDecode::RowEnd CCITTFaxDecode::ReadRun(int color, int& run) {
    run = 0;
    for (;;) {
        Need(kBlackLookupBits);
        const Code c = color ? m_black.Lookup(Peek(kBlackLookupBits))
                             : m_white.Lookup(Peek(kWhiteLookupBits));
        // A code reaching past the data (the zeros behind it read as an end-of-line code).
        if (c.bits > m_nbits) return e_row_data_end;
        const Code* tab_entry = &c;
        switch (c.kind) {
            case e_term:
                LUM_FAX_CHECK_RUN(int(tab_entry->param) >= 0, "int(tab_entry->Param)>=0");
                Drop(c.bits);
                run += c.param;
                return e_row_done;
            case e_makeup:
                LUM_FAX_CHECK_RUN(int(tab_entry->param) >= 0, "int(tab_entry->Param)>=0");
                Drop(c.bits);
                run += c.param;
                if (run > kMaxRun) return e_row_bad;
                continue;
            case e_eol:
                return e_row_eol;
            default:
                return e_row_bad;
        }
    }
}

CCITTFaxDecode::RowEnd CCITTFaxDecode::DecodeRow1D(int& a0) {
    int color = 0;
    while (a0 < m_Columns) {
        int run;
        const RowEnd end = ReadRun(color, run);
        if (end != e_row_done) return end;
        a0 += run;
        if (!StoreRun(a0)) return e_row_bad;
        color ^= 1;
    }
    return e_row_done;
}

CCITTFaxDecode::RowEnd CCITTFaxDecode::DecodeRow2D(int& a0) {
    const int* ref = m_ref.data();
    size_t k = 0;  // first change of the reference row right of a0
    int color = 0;
    bool start = true;  // before the first code, a0 stands left of the row
    while (a0 < m_Columns) {
        // b1: the first change of the reference row right of a0 to the colour opposite a0's;
        // changes at even indexes are to black. The three trailing Columns end every search.
        const int bound = start ? -1 : a0;
        while (ref[k] <= bound) ++k;
        const size_t j = k + ((k & 1) != size_t(color) ? 1 : 0);
        const int b1 = ref[j];
        const int b2 = ref[j + 1];

        Need(kModeLookupBits);
        const Code c = m_modes[Peek(kModeLookupBits)];
        if (c.bits > m_nbits && c.kind != e_eol) return e_row_data_end;
        const Code* tab_entry = &c;
        switch (c.kind) {
            case e_pass:
                // The run goes on under b2, in the same colour.
                Drop(c.bits);
                a0 = b2;
                break;
            case e_horiz: {
                Drop(c.bits);
                int r1, r2;
                RowEnd end = ReadRun(color, r1);
                if (end != e_row_done) return end;
                end = ReadRun(color ^ 1, r2);
                if (end != e_row_done) return end;
                if (!StoreRun(a0 + r1) || !StoreRun(a0 + r1 + r2)) return e_row_bad;
                a0 += r1 + r2;
                break;
            }
            case e_vert: {
                Drop(c.bits);
                if (c.param == 0)
                    LUM_FAX_CHECK_RUN(int(b1 - a0) >= 0, "int(b1 - a0)>=0");
                else if (c.param > 0)
                    LUM_FAX_CHECK_RUN(int(b1 - a0 + tab_entry->param) >= 0,
                                      "int(b1 - a0 + tab_entry->Param)>=0");
                else
                    LUM_FAX_CHECK_RUN(int(b1 - a0 - (-tab_entry->param)) >= 0,
                                      "int(b1 - a0 - tab_entry->Param)>=0");
                const int a1 = b1 + c.param;
                if (!StoreRun(a1)) return e_row_bad;
                a0 = a1;
                color ^= 1;
                break;
            }
            case e_eol:
                // Seven zeros: an end-of-line code if eleven are, else no code at all.
                Need(12);
                if (m_nbits < 12) return e_row_data_end;
                return Peek(11) == 0 ? e_row_eol : e_row_bad;
            default:
                return e_row_bad;
        }
        start = false;
    }
    return e_row_done;
}

void CCITTFaxDecode::CompleteRow(int a0) {
    // The run in progress (after a pass code) ends where the decoding stopped.
    int pos = m_cur.empty() ? 0 : m_cur.back();
    if (a0 > pos) {
        m_cur.push_back(a0);
        pos = a0;
    }
    if (pos == m_Columns) return;
    Damage();
    while (pos > m_Columns) {
        m_cur.pop_back();
        pos = m_cur.empty() ? 0 : m_cur.back();
    }
    // A short row ends in white, whichever colour it stopped in.
    a0 = pos;
    if (m_cur.size() & 1) m_cur.push_back(a0);  // an empty black run first
    LUM_FAX_CHECK_RUN(int(m_Columns - a0) >= 0, "int(m_Columns - a0)>=0");
    m_cur.push_back(m_Columns);
}

void CCITTFaxDecode::PaintRow() {
    UInt8* row = m_buf_begin;
    const int black = m_BlackIs1 ? 1 : 0;
    std::memset(row, black ? 0x00 : 0xFF, m_row_bytes);
    int x = 0;
    for (size_t i = 0; i < m_cur.size(); ++i) {
        const int end = std::min(m_cur[i], m_Columns);
        if ((i & 1) && end > x) FillBits(row, x, end, black);
        x = std::max(x, end);
    }
}

void CCITTFaxDecode::MakeReference() {
    // Runs of length 0 are no change of colour: two changes at one place cancel.
    m_ref.clear();
    for (int pos : m_cur) {
        if (pos >= m_Columns) break;
        if (!m_ref.empty() && m_ref.back() == pos)
            m_ref.pop_back();
        else
            m_ref.push_back(pos);
    }
    m_ref.insert(m_ref.end(), 3, m_Columns);
}

void CCITTFaxDecode::Damage() {
    if (m_row_damaged) return;  // a row counts once, however many faults it has
    m_row_damaged = true;
    if (m_damaged >= m_DamagedRowsBeforeError) m_end = true;
    ++m_damaged;
}

void CCITTFaxDecode::Resync() {
    // Drops bits until an end-of-line code starts (eleven zeros) or the data ends; the code
    // itself is left for the next row, which takes it as the end-of-line code in front of it.
    for (;;) {
        Need(11);
        if (m_nbits == 0 || Peek(11) == 0) return;
        Drop(1);
    }
}

}  // namespace lum::Filters
