#include "Filters/JBIG2Decode.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/FilterReader.h"

// jbig2.h defines `inline` away when it is no macro: it comes last, and the keyword is
// given back behind it.
#include <jbig2.h>
#undef inline

namespace lum::Filters {

namespace {

// jbig2dec allocates through this, within Limits::kMaxImageDecoderMemory for one decoding:
// a page header may claim any size, and the page is allocated whole.
struct BoundedAllocator {
    Jbig2Allocator base;  // first, so that the callbacks find the rest
    size_t total = 0;

    // Each block starts with its size, padded to keep the block aligned.
    static constexpr size_t kHeader = alignof(std::max_align_t);

    static BoundedAllocator& Of(Jbig2Allocator* a) { return *reinterpret_cast<BoundedAllocator*>(a); }

    static void* Alloc(Jbig2Allocator* a, size_t size) {
        BoundedAllocator& self = Of(a);
        if (size > Limits::kMaxImageDecoderMemory - std::min(self.total, Limits::kMaxImageDecoderMemory))
            return nullptr;
        auto* block = static_cast<UInt8*>(std::malloc(size + kHeader));
        if (!block) return nullptr;
        std::memcpy(block, &size, sizeof size);
        self.total += size;
        return block + kHeader;
    }

    static void Free(Jbig2Allocator* a, void* p) {
        if (!p) return;
        UInt8* block = static_cast<UInt8*>(p) - kHeader;
        size_t size;
        std::memcpy(&size, block, sizeof size);
        Of(a).total -= size;
        std::free(block);
    }

    static void* Realloc(Jbig2Allocator* a, void* p, size_t size) {
        if (!p) return Alloc(a, size);
        UInt8* block = static_cast<UInt8*>(p) - kHeader;
        size_t old;
        std::memcpy(&old, block, sizeof old);
        BoundedAllocator& self = Of(a);
        if (size > old && size - old > Limits::kMaxImageDecoderMemory - std::min(self.total, Limits::kMaxImageDecoderMemory))
            return nullptr;
        auto* grown = static_cast<UInt8*>(std::realloc(block, size + kHeader));
        if (!grown) return nullptr;
        std::memcpy(grown, &size, sizeof size);
        self.total = self.total - old + size;
        return grown + kHeader;
    }

    BoundedAllocator() : base{&Alloc, &Free, &Realloc} {}
};

// Errors stay with the module; whether a page comes out decides.
void IgnoreError(void*, const char*, Jbig2Severity, uint32_t) {}

// Appends everything `f` delivers to `buf`, in steps; false when it grows beyond the bound.
bool ReadAllInto(Filter* f, std::vector<UInt8>& buf) {
    if (!f) return true;
    FilterReader reader(f);
    for (;;) {
        if (buf.size() > Limits::kMaxImageDecoderMemory) return false;
        const size_t at = buf.size();
        buf.resize(at + JBIG2Decode::kReadStep);
        const size_t n = reader.Read(buf.data() + at, JBIG2Decode::kReadStep);
        buf.resize(at + n);
        if (n < JBIG2Decode::kReadStep) return true;
    }
}

}  // namespace

bool DecodeJBIG2Page(const UInt8* data, size_t size, UInt32 width, UInt32 height, UInt8* out,
                     size_t row_size) {
    BoundedAllocator allocator;
    Jbig2Ctx* ctx = jbig2_ctx_new(&allocator.base, JBIG2_OPTIONS_EMBEDDED, nullptr, &IgnoreError, nullptr);
    if (!ctx) return false;
    jbig2_data_in(ctx, data, size);
    // A page whose end segment is missing (or damaged) is ended here and taken as it is.
    jbig2_complete_page(ctx);
    Jbig2Image* page = jbig2_page_out(ctx);
    if (page) {
        // The module's 1 is black; the stage's black is 0. Outside the page is white.
        std::memset(out, 0xFF, row_size * height);
        const UInt32 rows = std::min(height, page->height);
        const UInt32 cols = std::min(width, page->width);
        const size_t bytes = (size_t(cols) + 7) / 8;
        const UInt8 tail = cols % 8 ? UInt8(0xFF >> (cols % 8)) : 0;  // bits beyond `cols`
        for (UInt32 y = 0; y < rows; ++y) {
            const UInt8* src = page->data + size_t(y) * page->stride;
            UInt8* dst = out + size_t(y) * row_size;
            for (size_t i = 0; i < bytes; ++i) dst[i] = static_cast<UInt8>(~src[i]);
            if (bytes) dst[bytes - 1] |= tail;
        }
        jbig2_release_page(ctx, page);
    }
    jbig2_ctx_free(ctx);
    return page != nullptr;
}

JBIG2Decode::JBIG2Decode(std::unique_ptr<Filter> input, std::unique_ptr<Filter> globals,
                         Int64 width, Int64 height)
    : BufFilter(std::move(input), 0, true),
      mp_globals(std::move(globals)),
      m_width(width),
      m_height(height) {}

JBIG2Decode::~JBIG2Decode() = default;

size_t JBIG2Decode::Process() {
    if (m_delivered) return 0;
    m_delivered = true;
    if (m_decoded) return m_buf_size;  // again after a Reset
    m_decoded = true;
    std::vector<UInt8> data;
    m_dec_ok = ReadAllInto(mp_globals.get(), data);
    mp_globals.reset();
    m_dec_ok = m_dec_ok && ReadAllInto(m_attached.get(), data);
    const size_t row_size = m_width > 0 ? (size_t(m_width) + 7) / 8 : 0;
    const size_t height = m_height > 0 ? size_t(m_height) : 0;
    // The stated size is checked before anything is allocated for it.
    m_dec_ok = m_dec_ok && row_size > 0 && height > 0 && m_width <= INT32_MAX &&
               m_height <= INT32_MAX && row_size <= Limits::kMaxImageDecoderMemory / height;
    if (m_dec_ok) {
        AllocateBuffer(row_size * height);
        m_dec_ok = DecodeJBIG2Page(data.data(), data.size(), UInt32(m_width), UInt32(m_height),
                                   m_buf_begin, row_size);
    }
    if (!m_dec_ok) m_buf_size = 0;  // nothing to give again after a Reset
    LUM_CHECK(m_dec_ok, "An error occurred while decoding JBIG2 stream");
    return m_buf_size;
}

void JBIG2Decode::Reset() {
    BufFilter::Reset();
    m_delivered = false;
}

}  // namespace lum::Filters
