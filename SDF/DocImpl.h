#pragma once
// The document store: the table of numbered objects on one input filter.
//
// Opening decides once whether the file's cross-reference data can be trusted or the table
// must be rebuilt from the bytes; after that every object is read the first time someone
// touches it, under the object lock, and stays until the document dies.
#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/RecursiveSharedMutex.h"
#include "Common/Types.h"
#include "SDF/XRefTable.h"

namespace lum {
class UString;
}
namespace lum::Filters {
class Filter;
}

namespace lum::SDF {

class SDFDoc;
class Obj;
class Indirect;
class ObjParser;
class SecurityHandler;
class XRefParser;
class XRefRebuilderImpl;

// Per-document state that layers above the store keep with the document (the table of shared
// fonts and colour spaces, the glyph box cache). The store owns it without knowing its type
// and destroys it before the objects it may point into.
class DocAttachment {
public:
    virtual ~DocAttachment();
};

class DocImpl {
public:
    // Opens the document on `input` (owned from now on): reads the cross-reference data, or
    // rebuilds the table when that fails or the catalog can't be reached. Fails only when the
    // filter is unusable or the rebuild itself fails (no header: the bytes are no PDF).
    DocImpl(SDFDoc* owner, std::unique_ptr<Filters::Filter> input, bool check_root);
    ~DocImpl();
    DocImpl(const DocImpl&) = delete;
    DocImpl& operator=(const DocImpl&) = delete;

    // The SDFDoc that owns this implementation.
    SDFDoc* GetSDFDoc() const { return mp_sdfdoc; }

    // Entry `num` of the table; entry 0 (the trailer) for a number without an entry.
    Indirect* GetObj(UInt32 num);
    // The number of slots of the main table; object numbers are compared with this.
    size_t GetXRefSize() const;

    // Loads the target of `ind`; called by Indirect under the object lock.
    void LoadObj(Indirect& ind);

    // The recursive object lock taken around every load of an Indirect.
    std::recursive_mutex& GetObjLock() { return m_obj_lock; }

    // The parser on the document's input, or null when the document has no file.
    ObjParser* GetObjParser() const;

    // A new reader on the document's input with its own position (for stream data).
    std::unique_ptr<Filters::Filter> CreateInputIterator() const;

    // --- The document as a whole ---

    // Entry 0, whose target is the trailer dictionary (or the cross-reference stream).
    Indirect* GetTrailer();
    // The catalog: Root of the trailer. Fails with "Doc root not found".
    Obj* GetRoot();

    bool IsRebuilt() const { return m_rebuilt; }
    // The newest section was a cross-reference stream, or the rebuild took one as trailer.
    bool HasXRefStream() const { return m_has_xref_stream; }
    // Absolute offset of the newest cross-reference section as startxref gave it (also when
    // the table was rebuilt after all); 0 when startxref was not found.
    UInt64 GetLastXRefOffset() const { return m_last_xref_offset; }
    // The header as found in the first 1024 bytes ("%PDF-1.7"), empty when there was none.
    const std::string& GetHeader() const { return m_header; }
    // The first number behind the header, or 0.
    UInt32 GetFirstObjNum() const { return m_first_obj_num; }
    // Why the table had to be rebuilt ("Corrupt PDF: " and the failure's text), for diagnosis;
    // empty when the file's own table was used.
    const std::string& GetRepairReason() const { return m_repair_reason; }
    // The failure that led to the repair, with all its texts; null when there was none.
    const Common::Exception* GetRepairCause() const { return m_repair_cause.get(); }

    // The font used where a font resource is missing: one per document, made on first request,
    // Helvetica in WinAnsiEncoding. It is no part of the file (kind 0).
    Indirect* GetDefaultFont();
    // The page that stands in for an unreadable page-tree kid: one per document, made on first
    // request under the document lock.
    Indirect* GetBlankPage();
    // Makes a new object behind every number of the table, with `value` (direct, owned from
    // now on) as target. Safe while other threads read the table.
    Indirect* CreateIndirect(Obj* value);

    // --- Security ---

    // Sets up decryption from the trailer's Encrypt entry. The checking form (used while the
    // document opens) answers false instead of failing when a password is needed or the
    // handler is not the standard one. Answers true when the document reads without password.
    bool InitSecurityHandler(void* custom_data = nullptr, bool checking = false);
    // The same with a password.
    bool InitStdSecurityHandler(const UString& password);
    // Installs a handler that passed authorisation; its clone becomes the crypt handler.
    void InstallSecurityHandler(std::unique_ptr<SecurityHandler> handler);
    SecurityHandler* GetSecurityHandler() const { return mp_security_handler.get(); }
    // What strings and streams are decrypted with; null for a plain document.
    SecurityHandler* GetCryptHandler() const { return mp_crypt_handler.get(); }

    // --- Locks and caches ---

    Common::RecursiveSharedMutex& GetDocLock() { return m_doc_lock; }
    // Called when an object changed; dependent caches would be told here. Nothing on the
    // reading road depends on objects, so this only takes the document lock for the walk.
    void NotifyModified(Obj* cause);

    enum AttachmentSlot {
        e_shared_resources = 0,
        e_glyph_box_cache = 1,
        e_number_tree_index = 2,
        e_attachment_count
    };
    // The attachment in `slot`, made by `make()` (answering a new DocAttachment) on first use.
    // Lookups and the insertion run under the table's mutex; `make` must not reenter here.
    template <class Make>
    DocAttachment* GetAttachment(AttachmentSlot slot, Make&& make) {
        std::lock_guard<std::mutex> lock(m_xref.GetMutex());
        auto& held = m_attachments[slot];
        if (!held) held.reset(make());
        return held.get();
    }

    // Slot `num` of the table as it stands: null for a number no section mentioned (where
    // GetObj answers the trailer). For tools that list the table.
    Indirect* GetEntry(size_t num) const { return m_xref[num]; }
    const XRefTable& Table() const { return m_xref; }

private:
    // The parsers of the file, of object streams and the rebuild fill the table while the
    // document opens; the table is sealed when the opening ends.
    friend class XRefParser;
    friend class XRefRebuilderImpl;
    friend class ObjParser;
    friend class ObjStmParser;

    // Parses the table, checks security and the catalog, and rebuilds once on any failure.
    void Open(bool check_root);
    void Rebuild();

    // First, so that it dies last: targets may point into anything else.
    XRefTable m_xref;
    SDFDoc* mp_sdfdoc = nullptr;
    bool m_has_xref_stream = false;
    bool m_rebuilt = false;
    std::recursive_mutex m_obj_lock;
    Common::RecursiveSharedMutex m_doc_lock;
    UInt64 m_last_xref_offset = 0;
    Indirect* mp_default_font = nullptr;  // in the table's pending part, not owned here
    std::once_flag m_default_font_once;
    Indirect* mp_blank_page = nullptr;    // likewise
    std::unique_ptr<Filters::Filter> m_input;
    std::unique_ptr<ObjParser> m_obj_parser;
    std::unique_ptr<SecurityHandler> mp_crypt_handler;
    std::unique_ptr<SecurityHandler> mp_security_handler;
    std::string m_header;
    UInt32 m_first_obj_num = 0;
    std::string m_repair_reason;
    std::unique_ptr<Common::Exception> m_repair_cause;
    std::array<std::unique_ptr<DocAttachment>, e_attachment_count> m_attachments;
    // Objects whose load is under way on the thread that holds the object lock.
    std::vector<Indirect*> m_loading;
};

}  // namespace lum::SDF
