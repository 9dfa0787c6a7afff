#include "Filters/LZMADecode.h"

#include <lzma.h>

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"

namespace lum::Filters {

struct LZMADecode::State {
    lzma_stream strm = LZMA_STREAM_INIT;
    bool open = false;
};

namespace {

// liblzma's results, by the names the failure message is written in.
constexpr lzma_ret SZ_OK = LZMA_OK;

}  // namespace

LZMADecode::LZMADecode(std::unique_ptr<Filter> input)
    : BufFilter(std::move(input), kBufferSize, true), mp_state(std::make_unique<State>()) {}

LZMADecode::~LZMADecode() { End(); }

void LZMADecode::End() {
    if (mp_state->open) lzma_end(&mp_state->strm);
    mp_state->strm = LZMA_STREAM_INIT;
    mp_state->open = false;
}

void LZMADecode::Start() {
    Filter* in = m_attached.get();
    // The header may straddle windows of the input.
    UInt8 header[kHeaderSize];
    size_t avail = 0;
    while (in && avail < kHeaderSize) {
        const size_t n = in->Size();
        if (n == 0) break;
        const size_t take = std::min(n, kHeaderSize - avail);
        std::memcpy(header + avail, in->Begin(), take);
        in->Consume(take);
        avail += take;
    }
    m_started = true;
    LUM_CHECK(avail >= 5, "Not enough data to get lzma properties");

    lzma_filter filters[2] = {{LZMA_FILTER_LZMA1, nullptr}, {LZMA_VLI_UNKNOWN, nullptr}};
    lzma_ret res = lzma_properties_decode(&filters[0], nullptr, header, kHeaderSize);
    if (res == SZ_OK) {
        auto* opts = static_cast<lzma_options_lzma*>(filters[0].options);
        // The dictionary is allocated whole when the decoder starts: a hostile header must not
        // make it gigabytes.
        if (opts->dict_size > Limits::kMaxLZMADictionaryBytes) res = LZMA_MEMLIMIT_ERROR;
        if (res == SZ_OK) res = lzma_raw_decoder(&mp_state->strm, filters);
        mp_state->open = res == SZ_OK;
    }
    std::free(filters[0].options);
    LUM_CHECK(res == SZ_OK, "error in lzma decoding process");
}

size_t LZMADecode::Process() {
    if (m_failed) {
        m_failed = false;
        m_end = true;
        const lzma_ret res = LZMA_DATA_ERROR;
        LUM_CHECK(res == SZ_OK, "error in lzma decoding process");
    }
    if (m_end) return 0;
    if (!m_started) Start();

    lzma_stream& strm = mp_state->strm;
    strm.next_out = m_buf_begin;
    strm.avail_out = m_buf_size;
    Filter* in = m_attached.get();
    while (strm.avail_out > 0) {
        const size_t n = in ? in->Size() : 0;
        strm.next_in = n ? in->Begin() : nullptr;
        strm.avail_in = n;
        const size_t out_before = strm.avail_out;
        const lzma_ret res = lzma_code(&strm, n ? LZMA_RUN : LZMA_FINISH);
        if (n) in->Consume(n - strm.avail_in);
        if (res == LZMA_STREAM_END) {
            m_end = true;
            break;
        }
        if (n == 0 && (res == LZMA_BUF_ERROR || strm.avail_out == out_before)) {
            // Data without an end marker stops where the input stops.
            m_end = true;
            break;
        }
        if (res != SZ_OK) {
            m_end = true;
            if (strm.avail_out < m_buf_size) {
                m_failed = true;
                m_end = false;
                break;
            }
            LUM_CHECK(res == SZ_OK, "error in lzma decoding process");
        }
    }
    return m_buf_size - strm.avail_out;
}

void LZMADecode::Reset() {
    BufFilter::Reset();
    End();
    m_started = m_end = m_failed = false;
}

}  // namespace lum::Filters
