#pragma once
// Decodes CCITT Group 3 and Group 4 fax data (ITU-T T.4 and T.6): one-dimensional (K = 0),
// two-dimensional (K < 0) and mixed (K > 0). Delivers one row per window, 1 bit per pixel,
// most significant bit first, black as 0 unless BlackIs1.
//
// Bad data never stops the page: a damaged row is completed with white and delivered, and the
// decoder resynchronises on the next end-of-line code or ends the data (DamagedRowsBeforeError).
// After an early end the last row repeats until Rows. Only run lengths that can't be (a
// vertical code pointing left of the current position) raise "Bad stream".
//
// Stream parameters: /CCITTFaxDecode and /CCF with /K, /EndOfLine, /EncodedByteAlign,
// /Columns, /Rows, /EndOfBlock, /BlackIs1, /DamagedRowsBeforeError (see CCITTFaxParams).
#include <vector>

#include "Filters/CCITTFaxTables.h"
#include "Filters/Filter.h"

namespace lum::Filters {

struct CCITTFaxParams {
    Int64 k = 0;
    bool end_of_line = false;
    bool encoded_byte_align = false;
    Int64 columns = 1728;
    Int64 rows = 0;
    bool end_of_block = true;
    bool black_is_1 = false;
    Int64 damaged_rows_before_error = 0;
};

class CCITTFaxDecode : public BufFilter {
public:
    // Raises when Columns is negative or above Limits::kMaxFaxColumns.
    CCITTFaxDecode(std::unique_ptr<Filter> input, const CCITTFaxParams& params);
    ~CCITTFaxDecode() override;

    const char* GetName() const override { return "CCITTFaxDecode"; }
    void Reset() override;
    // Hand the whole bytes read ahead of the decoding back to the input first, so that what
    // follows the coded data (the end of an inline image) stays for the next reader.
    void AttachFilter(std::unique_ptr<Filter> filter) override;
    std::unique_ptr<Filter> ReleaseAttachedFilter() override;
    void Flush() override;

protected:
    size_t Process() override;

private:
    // How the decoding of a row stopped.
    enum RowEnd { e_row_done, e_row_eol, e_row_bad, e_row_data_end };

    // Bit input, most significant bit first: m_acc holds m_nbits bits of the data at its top,
    // zeros below them. Bytes are pulled one at a time from the input's window, only when a
    // code needs them.
    bool Need(int n);
    int NextByte();
    void GiveBack();
    UInt32 Peek(int n) const { return static_cast<UInt32>(m_acc >> (64 - n)); }
    void Drop(int n) {
        m_acc <<= n;
        m_nbits -= n;
    }
    // Drops zero bits up to and including the next 1 bit; false when the data ends first.
    bool SkipEol();
    // The next bit, or 1 at the end of the data.
    int ReadBit();

    RowEnd DecodeRow1D(int& a0);
    RowEnd DecodeRow2D(int& a0);
    // One run of `color` (0 white, 1 black): make-up codes and the terminating code.
    RowEnd ReadRun(int color, int& run);
    // Appends the end position of the next run; false when the row holds too many runs.
    bool StoreRun(int pos);
    void DecodeRow();
    void CompleteRow(int a0);
    void PaintRow();
    void MakeReference();
    void Damage();
    void Resync();
    void StartState();

    // Parameters, after the constructor's adjustments.
    Int64 m_K;
    bool m_EndOfLine;
    bool m_EncodedByteAlign;
    int m_Columns;
    Int64 m_Rows;
    bool m_EndOfBlock;
    bool m_BlackIs1;
    Int64 m_DamagedRowsBeforeError;

    const Fax::RunTable& m_white;
    const Fax::RunTable& m_black;
    const Fax::Code* m_modes;

    size_t m_row_bytes;
    // The current row as end positions of its runs (white first, alternating), and the
    // reference row as the positions where its colour changes, followed by three Columns.
    std::vector<int> m_cur;
    std::vector<int> m_ref;

    UInt64 m_acc = 0;
    int m_nbits = 0;
    bool m_input_end = false;
    const UInt8* m_in = nullptr;  // the input's window, m_in_pos of its m_in_size bytes taken
    size_t m_in_size = 0;
    size_t m_in_pos = 0;

    Int64 m_rows_done = 0;
    Int64 m_damaged = 0;
    size_t m_repeated_bytes = 0;  // bytes of rows repeated after an early end
    bool m_next_2d = false;
    bool m_row_damaged = false;
    bool m_end = false;
};

}  // namespace lum::Filters
