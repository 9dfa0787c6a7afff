#include "PDF/FerroxResources.h"

#include <map>
#include <memory>
#include <vector>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "PDF/Font/CMapStm.h"
#include "PDF/Font/Font.h"
#include "PDF/ResourceData.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace lum::PDF::Resource {

namespace {

struct ResImpl {
    static std::unique_ptr<SDF::SDFDoc> gl_ferrox_resources;
    // Unpacked predefined CMaps. Each font that names one builds a CMap of its own, and the
    // unpacking costs twice the parsing: a document of two hundred fonts on one CMap unpacks
    // it once. The CMaps themselves are not kept.
    static std::map<SDF::Obj*, std::vector<UInt8>> gl_unpacked;
};
std::unique_ptr<SDF::SDFDoc> ResImpl::gl_ferrox_resources;
std::map<SDF::Obj*, std::vector<UInt8>> ResImpl::gl_unpacked;

const std::vector<UInt8>& Unpacked(SDF::Obj* stm) {
    auto found = ResImpl::gl_unpacked.find(stm);
    if (found != ResImpl::gl_unpacked.end()) return found->second;
    auto chain = stm->GetDecodedStream();
    Filters::FilterReader reader(chain.get());
    std::vector<UInt8> bytes;
    UInt8 buf[65536];
    for (size_t n; (n = reader.Read(buf, sizeof buf)) > 0;) bytes.insert(bytes.end(), buf, buf + n);
    return ResImpl::gl_unpacked[stm] = std::move(bytes);
}

// Opens on demand and raises when the document isn't there even then.
SDF::SDFDoc& RequireResources() {
    LoadResources();
    LUM_CHECK(ResImpl::gl_ferrox_resources, "Cannot find or load Ferrox resources");
    return *ResImpl::gl_ferrox_resources;
}

SDF::Obj* FindInTrailerDict(SDF::SDFDoc& doc, const char* dict_key, const char* name) {
    if (!name) return nullptr;
    SDF::Obj* dict = doc.GetTrailer()->Get(dict_key)->second;
    return dict->FindObj(name);
}

}  // namespace

std::recursive_mutex& GetResourceLock() {
    static std::recursive_mutex lock;
    return lock;
}

bool LoadResources() {
    std::lock_guard<std::recursive_mutex> lock(GetResourceLock());
    if (ResImpl::gl_ferrox_resources) return true;
    try {
        auto input = std::make_unique<Filters::ExtBufInputFilter>(ResourceData::Begin(),
                                                                  ResourceData::Size());
        ResImpl::gl_ferrox_resources =
            std::make_unique<SDF::SDFDoc>(std::move(input), /*check_root=*/false);
    } catch (const Common::Exception&) {
        ResImpl::gl_ferrox_resources.reset();
    }
    return ResImpl::gl_ferrox_resources != nullptr;
}

void UnloadResources() {
    std::lock_guard<std::recursive_mutex> lock(GetResourceLock());
    ResImpl::gl_unpacked.clear();
    ResImpl::gl_ferrox_resources.reset();
}

SDF::SDFDoc* GetResourceDoc() {
    std::lock_guard<std::recursive_mutex> lock(GetResourceLock());
    return ResImpl::gl_ferrox_resources.get();
}

SDF::Obj* GetBase14FontDict(const char* name) {
    std::lock_guard<std::recursive_mutex> lock(GetResourceLock());
    return FindInTrailerDict(RequireResources(), "F", name);
}

Font GetBase14Font(const char* name) {
    std::lock_guard<std::recursive_mutex> lock(GetResourceLock());
    return Font(FindInTrailerDict(RequireResources(), "F", name));
}

bool IsRecognizedCMap(const char* name) {
    std::lock_guard<std::recursive_mutex> lock(GetResourceLock());
    return FindInTrailerDict(RequireResources(), "C", name) != nullptr;
}

SDF::Obj* GetCMapStream(const char* name) {
    std::lock_guard<std::recursive_mutex> lock(GetResourceLock());
    if (!ResImpl::gl_ferrox_resources) return nullptr;
    SDF::Obj* cmap = FindInTrailerDict(*ResImpl::gl_ferrox_resources, "C", name);
    return cmap && cmap->IsStream() ? cmap : nullptr;
}

std::unique_ptr<Fnt::CMap> GetCMap(const char* name) {
    std::lock_guard<std::recursive_mutex> lock(GetResourceLock());
    if (!ResImpl::gl_ferrox_resources) return nullptr;
    SDF::Obj* stm = GetCMapStream(name);
    LUM_CHECK(stm, "Unknown CMap");
    const std::vector<UInt8>& bytes = Unpacked(stm);
    return std::make_unique<Fnt::CMapStm>(
        stm, name, std::make_unique<Filters::ExtBufInputFilter>(bytes.data(), bytes.size()));
}

}  // namespace lum::PDF::Resource
