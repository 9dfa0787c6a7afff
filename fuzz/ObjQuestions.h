#pragma once
// Asks a value every question of the object interface, descending into containers. Failures
// that the interface promises (typed failures) are expected and swallowed; anything else
// (a crash, a sanitizer report, a hang) is what the fuzzers look for.
#include <cstring>
#include <memory>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "Filters/FilterReader.h"
#include "Filters/FilterWriter.h"
#include "Filters/MemoryFilter.h"
#include "SDF/Obj.h"

namespace lum::fuzz {

template <class F>
inline void Try(F&& f) {
    try {
        f();
    } catch (const Common::Exception&) {
    }
}

inline void AskEverything(SDF::Obj* v, int depth = 0) {
    using SDF::Obj;
    if (!v || depth > 1100) return;
    // Deep inside a value only the walk goes on: every illegal question costs an exception,
    // and a thousand levels of them would make the fuzzer crawl.
    if (depth > 8) {
        Try([&] {
            if (v->IsArray())
                for (UInt32 i = 0; i < v->Size(); ++i) AskEverything(v->GetAt(i), depth + 1);
            else if (v->IsDict())
                for (auto it = v->DictBegin(); it != v->DictEnd(); ++it)
                    AskEverything(it->second, depth + 1);
        });
        return;
    }
    Try([&] { (void)v->GetType(); });
    Try([&] { (void)v->IsBool(); (void)v->IsNumber(); (void)v->IsNull(); (void)v->IsString(); });
    Try([&] { (void)v->IsName(); (void)v->IsDict(); (void)v->IsArray(); (void)v->IsStream(); });
    Try([&] { (void)v->IsContainer(); (void)v->IsLoaded(); (void)v->IsIndirect(); });
    Try([&] { (void)v->Size(); });
    Try([&] { (void)v->GetBool(); });
    Try([&] { (void)v->GetNumber(); });
    Try([&] { (void)std::strlen(v->GetName()); });
    Try([&] {
        const UInt8* b = v->GetBuffer();
        volatile UInt8 sink = 0;
        for (UInt64 i = 0; b && i < v->Size(); ++i) sink = sink ^ b[i];
    });
    Try([&] {
        UString text;
        v->GetAsPDFText(text);
        (void)text.ConvertToUtf8();
    });
    Try([&] { (void)v->GetObjNum(); (void)v->GetGenNum(); (void)v->IsFree(); });
    Try([&] { (void)v->Hash(); });
    Try([&] {
        // References and file streams are not copied: Clone answers the table's entry.
        Obj* copy = v->Clone();
        if (!copy || copy == v || copy->IsIndirect()) return;
        std::unique_ptr<Obj> owned(copy);
        (void)owned->IsEqualValue(v);
    });
    Try([&] {
        Filters::MemoryFilter out(64, false);
        Filters::FilterWriter w(&out);
        v->Write(w);
        w.Flush();
    });
    Try([&] {
        if (!v->IsDict() && !v->IsStream()) return;
        for (auto it = v->DictBegin(); it != v->DictEnd(); ++it) {
            (void)v->Find(*it->first);
            (void)v->FindObj(*it->first);
            (void)v->Get(*it->first);
            AskEverything(it->second, depth + 1);
        }
        (void)v->Find(SDF::e_Type);
    });
    Try([&] {
        if (!v->IsArray()) return;
        for (UInt32 i = 0; i < v->Size(); ++i) AskEverything(v->GetAt(i), depth + 1);
        (void)v->GetAt(UInt32(v->Size()));
    });
    Try([&] {
        if (!v->IsStream()) return;
        std::unique_ptr<Filters::Filter> chain = v->GetDecodedStream();
        Filters::FilterReader r(chain.get());
        UInt8 buf[4096];
        for (int i = 0; i < 256 && r.Read(buf, sizeof buf) == sizeof buf; ++i) {
        }
    });
}

}  // namespace lum::fuzz
