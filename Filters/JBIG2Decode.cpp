#include "Filters/JBIG2Decode.h"

#include <algorithm>
#include <csetjmp>
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

// One decoding's account with jbig2dec. Memory: a page header may claim any size and the page
// is allocated whole, though only the image's own Width x Height is kept of it; so the module
// gets Limits::kJBIG2MemoryPerImageByte times the image's bytes (at least
// Limits::kMinJBIG2DecoderMemory, at most Limits::kMaxImageDecoderMemory). Work: the module reports (and
// formats) a message for about each symbol and segment it decodes, and a dictionary claiming
// millions of symbols has them decoded from no data at all, for seconds, in a loop that neither
// allocates nor stops on its own. Past Limits::kMaxJBIG2DecoderMessages the decoding is
// abandoned by a jump back out of the module, and every block it still holds is freed here, as
// the module's own state is not touched again.
struct DecoderAccount {
    Jbig2Allocator base;  // first, so that the callbacks find the rest
    size_t budget;
    size_t total = 0;
    size_t messages = 0;
    std::jmp_buf abandon;

    // Each block starts with this, so that a decoding abandoned midway can free them all.
    struct alignas(std::max_align_t) Block {
        Block* prev;
        Block* next;
        size_t size;
    };
    Block* live = nullptr;

    static DecoderAccount& Of(Jbig2Allocator* a) { return *reinterpret_cast<DecoderAccount*>(a); }
    static Block* BlockOf(void* p) { return static_cast<Block*>(p) - 1; }

    bool Affords(size_t grow) const {
        return grow <= budget - std::min(total, budget);
    }

    void Link(Block* b) {
        b->prev = nullptr;
        b->next = live;
        if (live) live->prev = b;
        live = b;
    }

    void Unlink(Block* b) {
        (b->prev ? b->prev->next : live) = b->next;
        if (b->next) b->next->prev = b->prev;
    }

    static void* Alloc(Jbig2Allocator* a, size_t size) {
        DecoderAccount& self = Of(a);
        if (!self.Affords(size)) return nullptr;
        auto* b = static_cast<Block*>(std::malloc(sizeof(Block) + size));
        if (!b) return nullptr;
        b->size = size;
        self.Link(b);
        self.total += size;
        return b + 1;
    }

    static void Free(Jbig2Allocator* a, void* p) {
        if (!p) return;
        DecoderAccount& self = Of(a);
        Block* b = BlockOf(p);
        self.Unlink(b);
        self.total -= b->size;
        std::free(b);
    }

    static void* Realloc(Jbig2Allocator* a, void* p, size_t size) {
        if (!p) return Alloc(a, size);
        DecoderAccount& self = Of(a);
        Block* b = BlockOf(p);
        const size_t old = b->size;
        if (size > old && !self.Affords(size - old)) return nullptr;
        self.Unlink(b);
        auto* grown = static_cast<Block*>(std::realloc(b, sizeof(Block) + size));
        if (!grown) {
            self.Link(b);  // realloc leaves the block as it was
            return nullptr;
        }
        grown->size = size;
        self.Link(grown);
        self.total = self.total - old + size;
        return grown + 1;
    }

    static void Message(void* account, const char*, Jbig2Severity, uint32_t) {
        DecoderAccount& self = *static_cast<DecoderAccount*>(account);
        if (++self.messages > Limits::kMaxJBIG2DecoderMessages) std::longjmp(self.abandon, 1);
    }

    void FreeAll() {
        while (live) {
            Block* next = live->next;
            std::free(live);
            live = next;
        }
        total = 0;
    }

    explicit DecoderAccount(size_t image_bytes)
        : base{&Alloc, &Free, &Realloc},
          budget(std::clamp(image_bytes > Limits::kMaxImageDecoderMemory
                                ? Limits::kMaxImageDecoderMemory
                                : image_bytes * Limits::kJBIG2MemoryPerImageByte,
                            Limits::kMinJBIG2DecoderMemory, Limits::kMaxImageDecoderMemory)) {}
};

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
    // Nothing between here and the module's frames has a destructor, so the jump back is sound.
    DecoderAccount account(row_size * height);
    if (setjmp(account.abandon) != 0) {
        account.FreeAll();
        return false;
    }
    // Messages stay with the module (whether a page comes out decides); they are only counted.
    Jbig2Ctx* ctx = jbig2_ctx_new(&account.base, JBIG2_OPTIONS_EMBEDDED, nullptr, &DecoderAccount::Message,
                                  &account);
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
