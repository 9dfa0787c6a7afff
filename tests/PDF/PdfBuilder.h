#pragma once
// Writes small PDF files from object bodies, for tests that need many variations of one
// structure (page trees) or too many objects for a hand-written template.
#include <string>
#include <vector>

namespace lum::test {

// Object i+1 has body objects[i] ("<< ... >>"). Two markers shape the table: kFree makes the
// number a free entry, kBadOffset a row that points into the header, where no object starts.
inline const std::string kFree = "#free";
inline const std::string kBadOffset = "#bad-offset";

inline std::string BuildPdf(const std::vector<std::string>& objects,
                            const std::string& trailer = "/Root 1 0 R") {
    std::string out = "%PDF-1.7\n%\xE2\xE3\xCF\xD3\n";
    std::vector<std::string> rows;
    for (size_t i = 0; i < objects.size(); ++i) {
        char row[32];
        if (objects[i] == kFree) {
            rows.push_back("0000000000 65535 f\r\n");
            continue;
        }
        if (objects[i] == kBadOffset) {
            rows.push_back("0000000002 00000 n\r\n");
            continue;
        }
        std::snprintf(row, sizeof row, "%010zu 00000 n\r\n", out.size());
        rows.push_back(row);
        out += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const size_t xref = out.size();
    out += "xref\n0 " + std::to_string(objects.size() + 1) + "\n0000000000 65535 f\r\n";
    for (const auto& r : rows) out += r;
    out += "trailer\n<< /Size " + std::to_string(objects.size() + 1) + " " + trailer +
           " >>\nstartxref\n" + std::to_string(xref) + "\n%%EOF\n";
    return out;
}

}  // namespace lum::test
