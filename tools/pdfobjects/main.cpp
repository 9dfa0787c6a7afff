// pdfobjects: opens a PDF through the library and shows what the document store made of it:
// the trailer, the size of the table, whether the table had to be rebuilt, and for every
// entry whether its object loads, or why not.
//
//   pdfobjects [--summary] [--password PW] FILE...
//
// With --summary only one line per file is printed. An encrypted file is opened with PW (its
// bytes taken one by one as characters), or with the empty password. The exit status is 0 when every file
// opened, 1 when one could not be opened, 2 for a usage error.
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "Filters/FilterWriter.h"
#include "Filters/MappedFile.h"
#include "Filters/MemoryFilter.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

using namespace lum;

namespace {

// PDF syntax of a value, at most `limit` bytes of it.
std::string Show(const SDF::Obj& obj, size_t limit = 2000) {
    Filters::MemoryFilter out(256, false);
    {
        Filters::FilterWriter writer(&out);
        obj.Write(writer);
        writer.Flush();
    }
    std::string text(reinterpret_cast<const char*>(out.GetBuffer()), out.Count());
    if (text.size() > limit) text = text.substr(0, limit) + " ...";
    return text;
}

const char* TypeName(SDF::Obj::Type type) {
    static const char* const names[] = {"null", "bool",  "number", "name",
                                        "string", "dict", "array",  "stream"};
    return type >= 0 && type <= SDF::Obj::e_stream ? names[type] : "?";
}

struct Counts {
    size_t loaded = 0, failed = 0, free = 0;
};

// Loads every entry; prints one line per entry unless `summary`.
Counts LoadAll(SDF::DocImpl& doc, bool summary) {
    Counts counts;
    for (size_t n = 1; n < doc.GetXRefSize(); ++n) {
        SDF::Indirect* entry = doc.GetEntry(n);
        if (!entry || entry->IsFree()) {
            ++counts.free;
            if (!summary) std::printf("%zu: free\n", n);
            continue;
        }
        try {
            const SDF::Obj::Type type = entry->GetType();
            ++counts.loaded;
            if (!summary)
                std::printf("%zu %u: %s (kind %u, offset %llu)\n", n, entry->GetGenNum(),
                            TypeName(type), entry->GetField1(),
                            static_cast<unsigned long long>(entry->GetOffset()));
        } catch (const Common::Exception& e) {
            ++counts.failed;
            if (!summary)
                std::printf("%zu %u: FAILED: %s (kind %u, offset %llu)\n", n, entry->GetGenNum(),
                            e.what(), entry->GetField1(),
                            static_cast<unsigned long long>(entry->GetOffset()));
        }
    }
    return counts;
}

bool ProcessFile(const char* path, bool summary, const char* password) {
    try {
        SDF::SDFLinarDoc doc(std::make_unique<Filters::MappedFile>(path));
        SDF::DocImpl& impl = *doc.GetImpl();
        bool readable = impl.GetCryptHandler() != nullptr;
        if (password) readable = doc.InitStdSecurityHandler(UString(password, -1, enc_ascii));
        const bool encrypted = impl.GetTrailer()->FindObj(SDF::e_Encrypt) != nullptr;
        if (!summary) {
            std::printf("file: %s\n", path);
            std::printf("header: %s\n", impl.GetHeader().c_str());
            std::printf("rebuilt: %s\n", impl.IsRebuilt() ? "yes" : "no");
            if (impl.IsRebuilt()) std::printf("reason: %s\n", impl.GetRepairReason().c_str());
            std::printf("xref stream: %s\n", impl.HasXRefStream() ? "yes" : "no");
            if (encrypted)
                std::printf("encrypted: %s\n", readable ? "decrypting" : "password needed");
            SDF::Obj* trailer = impl.GetTrailer()->GetTarget();
            if (auto* stream = dynamic_cast<SDF::Stream*>(trailer)) trailer = stream->GetDict();
            std::printf("trailer: %s\n", trailer ? Show(*trailer).c_str() : "(none)");
            std::printf("objects: %zu\n", impl.GetXRefSize());
        }
        const Counts c = LoadAll(impl, summary);
        std::printf("%s%s: %zu entries, %zu loaded, %zu failed, %zu free%s%s\n",
                    summary ? "" : "summary ", path, impl.GetXRefSize(), c.loaded, c.failed,
                    c.free, impl.IsRebuilt() ? ", rebuilt" : "",
                    encrypted && !readable ? ", password needed" : "");
        return true;
    } catch (const Common::Exception& e) {
        std::printf("%s: cannot open: %s\n", path, e.what());
    } catch (const std::exception& e) {
        std::printf("%s: cannot open (%s)\n", path, e.what());
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    bool summary = false;
    const char* password = nullptr;
    std::vector<const char*> files;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--summary") == 0)
            summary = true;
        else if (std::strcmp(argv[i], "--password") == 0 && i + 1 < argc)
            password = argv[++i];
        else
            files.push_back(argv[i]);
    }
    if (files.empty()) {
        std::fprintf(stderr, "usage: pdfobjects [--summary] [--password PW] FILE...\n");
        return 2;
    }
    int status = 0;
    for (const char* file : files)
        if (!ProcessFile(file, summary, password)) status = 1;
    return status;
}
