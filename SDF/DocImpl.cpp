#include "SDF/DocImpl.h"

#include <algorithm>
#include <cstring>
#include <shared_mutex>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/UString.h"
#include "Filters/MemoryFilter.h"
#include "Filters/ThreadSafeFilter.h"
#include "SDF/Obj.h"
#include "SDF/ObjParser.h"
#include "SDF/SecurityHandler.h"
#include "SDF/SecurityHandlerSetup.h"
#include "SDF/XRefParser.h"
#include "SDF/XRefRebuilderImpl.h"

namespace lum::SDF {

namespace {
// Initial buffer of the copy made of an input that cannot seek.
constexpr size_t kUnseekableCopyInitialSize = 20000;

// Copies everything `input` delivers into memory.
std::unique_ptr<Filters::Filter> CopyIntoMemory(Filters::Filter& input) {
    auto memory = std::make_unique<Filters::MemoryFilter>(kUnseekableCopyInitialSize, false);
    for (size_t n; (n = input.Size()) != 0;) {
        const UInt8* src = input.Begin();
        size_t left = n;
        while (left) {
            const size_t room = memory->Size();
            const size_t k = room < left ? room : left;
            std::memcpy(memory->Begin(), src, k);
            memory->Consume(k);
            src += k;
            left -= k;
        }
        input.Consume(n);
    }
    memory->SetAsInputFilter();
    return memory;
}
}  // namespace

DocAttachment::~DocAttachment() = default;

DocImpl::DocImpl(SDFDoc* owner, std::unique_ptr<Filters::Filter> stream, bool check_root)
    : mp_sdfdoc(owner) {
    LUM_CHECK(stream && stream->IsInputFilter(), "The filter must be of the input type");
    if (!stream->CanSeek()) stream = CopyIntoMemory(*stream);
    // Streams are read through independent readers on the file, one per stream being read.
    if (!dynamic_cast<Filters::ThreadSafeFilter*>(stream.get()))
        stream = std::make_unique<Filters::ThreadSafeFilter>(std::move(stream));
    m_input = std::move(stream);
    m_obj_parser = std::make_unique<ObjParser>(this, m_input.get());
    Open(check_root);
}

DocImpl::~DocImpl() {
    // Higher layers' state may point into objects: it goes first. A load that failed leaves
    // values on the parser's stack that refer to entries, so the parser goes before the table.
    for (auto& attachment : m_attachments) attachment.reset();
    m_obj_parser.reset();
}

void DocImpl::Open(bool check_root) {
    try {
        {
            XRefParser parser(this);
            parser.Parse(0);
        }
        bool readable = false;
        try {
            readable = InitSecurityHandler(nullptr, true);
        } catch (const Common::Exception&) {
            readable = false;
        }
        // A document that waits for its password can't show its catalog yet.
        if (readable && check_root)
            LUM_CHECK(GetRoot()->Find(e_Pages) != GetRoot()->DictEnd(), "Bad Root");
        m_xref.Seal();
        return;
    } catch (const Common::Exception& e) {
        m_repair_reason = std::string("Corrupt PDF: ") + e.what();
        m_repair_cause = std::make_unique<Common::Exception>(e);
    }
    m_obj_parser->Reset();
    Rebuild();
    m_rebuilt = true;
    // The handler of a first check that passed decrypted what was read through it (the strings
    // of an indirect Encrypt dictionary among them), and one left in place would stay after a
    // failed second check: the second check starts from a plain document. The rebuild itself
    // ran with the handler, so that encrypted object streams could be unpacked.
    mp_security_handler.reset();
    mp_crypt_handler.reset();
    m_xref.Seal();
    try {
        InitSecurityHandler(nullptr, true);
    } catch (const Common::Exception&) {
    }
}

void DocImpl::Rebuild() {
    // What the failed parse found out about the table no longer holds.
    m_has_xref_stream = false;
    XRefRebuilderImpl rebuilder(this);
    rebuilder.Rebuild();
}

Indirect* DocImpl::GetObj(UInt32 num) {
    LUM_CHECK(!m_xref.empty(), "Corrupt PDF");
    // A number that no section mentions behaves as the trailer's entry.
    if (num >= m_xref.size()) return m_xref[0];
    Indirect* entry = m_xref[num];
    return entry ? entry : m_xref[0];
}

size_t DocImpl::GetXRefSize() const { return m_xref.size(); }

void DocImpl::LoadObj(Indirect& obj) {
    std::lock_guard<std::recursive_mutex> lock(m_obj_lock);
    if (obj.IsLoaded()) return;  // another thread was first
    LUM_CHECK(obj.IsFree() == false, "Attempt to load a free object");
    LUM_CHECK(m_obj_parser.get() != NULL, "Document is not attached to a file");
    // A load can touch other objects (an indirect Length, an operand that is a reference);
    // a cycle among them would recurse without end, and a long chain would exhaust the stack.
    LUM_CHECK(std::find(m_loading.begin(), m_loading.end(), &obj) == m_loading.end(),
              "Loop detected while loading object %u", obj.GetObjNum());
    LUM_CHECK(m_loading.size() < Limits::kMaxNestedLoads,
              "Objects nested too deeply while loading object %u", obj.GetObjNum());
    m_loading.push_back(&obj);
    struct Pop {
        std::vector<Indirect*>& loading;
        ~Pop() { loading.pop_back(); }
    } pop{m_loading};
    m_obj_parser->GetObj(obj);
}

ObjParser* DocImpl::GetObjParser() const { return m_obj_parser.get(); }

std::unique_ptr<Filters::Filter> DocImpl::CreateInputIterator() const {
    LUM_CHECK(m_input, "Document is not attached to a file");
    return m_input->CreateInputIterator();
}

Indirect* DocImpl::GetTrailer() { return m_xref.empty() ? nullptr : m_xref[0]; }

Obj* DocImpl::GetRoot() {
    Indirect* trailer = GetTrailer();
    Obj* root = trailer && trailer->GetTarget() ? trailer->FindObj(e_Root) : nullptr;
    LUM_CHECK(root, "Doc root not found");
    return root;
}

Indirect* DocImpl::CreateIndirect(Obj* value) {
    // The target is set before the entry is published, so no reader sees it unloaded and the
    // object lock is never taken inside the table's mutex.
    auto* entry = new Indirect(this, 0, 0, 0, 0);
    entry->SetTarget(value);
    m_xref.AppendPending(entry);
    return entry;
}

Indirect* DocImpl::GetDefaultFont() {
    std::call_once(m_default_font_once, [this] {
        auto* font = new Dict();
        font->PutName(e_Type, "Font");
        font->PutName(e_Subtype, "Type1");
        font->PutName(e_BaseFont, "Helvetica");
        font->PutName(e_Encoding, "WinAnsiEncoding");
        mp_default_font = CreateIndirect(font);
    });
    return mp_default_font;
}

Indirect* DocImpl::GetBlankPage() {
    std::lock_guard<Common::RecursiveSharedMutex> lock(m_doc_lock);
    if (!mp_blank_page) {
        auto* page = new Dict();
        page->PutName(e_Type, "Page");
        Obj* box = page->PutArray(e_MediaBox);
        for (double v : {0.0, 0.0, 612.0, 792.0}) box->PushBack(new Number(v));
        Obj* proc_set = page->PutDict(e_Resources)->PutArray(e_ProcSet);
        for (const char* name : {"PDF", "Text", "ImageB", "ImageC", "ImageI"})
            proc_set->PushBack(new Name(name));
        mp_blank_page = CreateIndirect(page);
    }
    return mp_blank_page;
}

void DocImpl::NotifyModified(Obj*) {
    // Nothing on the reading road depends on an object's content; the walk over dependents
    // would run here, under the document lock taken shared.
    std::shared_lock<Common::RecursiveSharedMutex> lock(m_doc_lock);
}

// --- Security ---
//
// The handlers themselves live in the security layer; the document holds the two it installs.

bool DocImpl::InitSecurityHandler(void* custom_data, bool checking) {
    return SDF::InitSecurityHandler(GetTrailer(), DocSecurity{mp_security_handler, mp_crypt_handler},
                                    custom_data, checking);
}

bool DocImpl::InitStdSecurityHandler(const UString& password) {
    return SDF::InitStdSecurityHandler(GetTrailer(),
                                       DocSecurity{mp_security_handler, mp_crypt_handler}, password);
}

void DocImpl::InstallSecurityHandler(std::unique_ptr<SecurityHandler> handler) {
    SDF::InstallSecurityHandler(DocSecurity{mp_security_handler, mp_crypt_handler},
                                std::move(handler));
}

}  // namespace lum::SDF
