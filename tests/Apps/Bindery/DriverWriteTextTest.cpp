// WriteText, the one way out for page output, in process: the screen form and both file
// encodings.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Apps/Bindery/Options.h"
#include "Apps/Bindery/WriteText.h"
#include "Common/UString.h"
#include "Filters/MemoryFilter.h"

using lum::UString;
using lum::Bindery::Options;
using lum::Bindery::WriteText;

namespace {

struct Captured {
    std::vector<std::pair<int, std::string>> messages;
};

const char* Capture(lum::Int32 kind, const char* text, void* context) {
    static_cast<Captured*>(context)->messages.emplace_back(kind, text);
    return nullptr;
}

// "Aé€" and U+1F600 as a surrogate pair.
UString Sample() {
    const lum::Unicode units[] = {'A', 0xE9, 0x20AC, 0xD83D, 0xDE00, '\n'};
    return UString(units, 6);
}

// The messages WriteText sends with the screen on, or off without an output file.
std::vector<std::pair<int, std::string>> Messages(const char* encoding, bool to_screen) {
    Options opt;
    Captured cap;
    opt.m_message = &Capture;
    opt.m_message_context = &cap;
    opt.m_encoding = encoding;
    opt.m_to_screen = to_screen;
    WriteText(opt, Sample());
    return cap.messages;
}

TEST(DriverWriteText, ScreenGetsAsciiFormWhateverTheEncoding) {
    const std::vector<std::pair<int, std::string>> screen = {{2, "A\\U00E9\\U20AC\\UD83D\\UDE00\n"}};
    EXPECT_EQ(screen, Messages("utf8", true));
    EXPECT_EQ(screen, Messages("utf16", true));
    // File mode without a file writes nothing anywhere.
    EXPECT_TRUE(Messages("utf8", false).empty());
}

std::string WrittenToFile(const std::string& encoding) {
    Options opt;
    opt.m_to_screen = false;
    opt.m_encoding = encoding;
    opt.m_out_filter = std::make_unique<lum::Filters::MemoryFilter>(16, false);
    opt.m_out_writer.AttachFilter(opt.m_out_filter.get());
    WriteText(opt, Sample());
    WriteText(opt, UString(std::string("x")));  // nothing is added between pieces
    opt.m_out_writer.Flush();
    auto* mem = static_cast<lum::Filters::MemoryFilter*>(opt.m_out_filter.get());
    const std::string out(reinterpret_cast<const char*>(mem->GetBuffer()), mem->Count());
    opt.m_out_writer.AttachFilter(nullptr);
    return out;
}

TEST(DriverWriteText, FilesGetUtf8OrUtf16LittleEndian) {
    const std::string utf8 = "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\nx";
    EXPECT_EQ(utf8, WrittenToFile("utf8"));
    EXPECT_EQ(utf8, WrittenToFile(""));
    EXPECT_EQ(utf8, WrittenToFile("latin1"));  // any other value means UTF-8
    const std::string utf16("A\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE\n\0x\0", 14);
    EXPECT_EQ(utf16, WrittenToFile("utf16"));
    EXPECT_EQ(utf16, WrittenToFile("utf-16"));
}

}  // namespace
