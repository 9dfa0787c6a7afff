#pragma once
// The resource document: the fourteen standard fonts (trailer key F) and the predefined CMaps
// (trailer key C), an object file held in the program's own data. It is opened by
// Ferrox::Initialize, or by the first lookup that needs it, and read only until
// Ferrox::Terminate. Every operation on it runs under the resource lock.
#include <memory>
#include <mutex>

namespace lum::SDF {
class Obj;
class SDFDoc;
}  // namespace lum::SDF

namespace lum::PDF::Fnt {
class CMap;
}
namespace lum::PDF {
class Font;
}

namespace lum::PDF::Resource {

// The resource lock: recursive, one for the process.
std::recursive_mutex& GetResourceLock();

// Opens the resource document if it isn't open. Never raises; false when it can't be opened.
bool LoadResources();
// Closes it; objects handed out before are gone.
void UnloadResources();
// The open document, or null.
SDF::SDFDoc* GetResourceDoc();

// The font dictionary of a standard font (an entry of F), or null for another name. Opens the
// document on demand; raises "Cannot find or load Ferrox resources" when it can't.
SDF::Obj* GetBase14FontDict(const char* name);

// The standard font `name` as a font of the resource document; raises as GetBase14FontDict,
// and an empty handle for another name.
Font GetBase14Font(const char* name);

// Whether `name` is a predefined CMap (a key of C). Opens the document on demand; raises as
// GetBase14FontDict.
bool IsRecognizedCMap(const char* name);

// The stream of a predefined CMap, or null for an unknown name. Doesn't open the document:
// null when Initialize hasn't. Raises when the document is damaged.
SDF::Obj* GetCMapStream(const char* name);

// A new CMap read from the predefined CMap `name`, or null when Initialize hasn't opened the
// resource document. Raises for a name that isn't there and for a damaged CMap.
std::unique_ptr<Fnt::CMap> GetCMap(const char* name);

}  // namespace lum::PDF::Resource
