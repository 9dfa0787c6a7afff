#include "Filters/CCITTFaxTables.h"

#include <cstring>
#include <vector>

namespace lum::Filters::Fax {

namespace {

// The codes as ITU-T T.4 prints them; index i of a terminating list is the run length i.
const char* const kWhiteTerm[64] = {
    "00110101", "000111",   "0111",     "1000",     "1011",     "1100",     "1110",
    "1111",     "10011",    "10100",    "00111",    "01000",    "001000",   "000011",
    "110100",   "110101",   "101010",   "101011",   "0100111",  "0001100",  "0001000",
    "0010111",  "0000011",  "0000100",  "0101000",  "0101011",  "0010011",  "0100100",
    "0011000",  "00000010", "00000011", "00011010", "00011011", "00010010", "00010011",
    "00010100", "00010101", "00010110", "00010111", "00101000", "00101001", "00101010",
    "00101011", "00101100", "00101101", "00000100", "00000101", "00001010", "00001011",
    "01010010", "01010011", "01010100", "01010101", "00100100", "00100101", "01011000",
    "01011001", "01011010", "01011011", "01001010", "01001011", "00110010", "00110011",
    "00110100"};

const char* const kBlackTerm[64] = {
    "0000110111",   "010",          "11",           "10",           "011",
    "0011",         "0010",         "00011",        "000101",       "000100",
    "0000100",      "0000101",      "0000111",      "00000100",     "00000111",
    "000011000",    "0000010111",   "0000011000",   "0000001000",   "00001100111",
    "00001101000",  "00001101100",  "00000110111",  "00000101000",  "00000010111",
    "00000011000",  "000011001010", "000011001011", "000011001100", "000011001101",
    "000001101000", "000001101001", "000001101010", "000001101011", "000011010010",
    "000011010011", "000011010100", "000011010101", "000011010110", "000011010111",
    "000001101100", "000001101101", "000011011010", "000011011011", "000001010100",
    "000001010101", "000001010110", "000001010111", "000001100100", "000001100101",
    "000001010010", "000001010011", "000000100100", "000000110111", "000000111000",
    "000000100111", "000000101000", "000001011000", "000001011001", "000000101011",
    "000000101100", "000001011010", "000001100110", "000001100111"};

// Make-up codes for 64, 128, ... 1728.
const char* const kWhiteMakeup[27] = {
    "11011",     "10010",     "010111",    "0110111",   "00110110",  "00110111",  "01100100",
    "01100101",  "01101000",  "01100111",  "011001100", "011001101", "011010010", "011010011",
    "011010100", "011010101", "011010110", "011010111", "011011000", "011011001", "011011010",
    "011011011", "010011000", "010011001", "010011010", "011000",    "010011011"};

const char* const kBlackMakeup[27] = {
    "0000001111",    "000011001000",  "000011001001",  "000001011011",  "000000110011",
    "000000110100",  "000000110101",  "0000001101100", "0000001101101", "0000001001010",
    "0000001001011", "0000001001100", "0000001001101", "0000001110010", "0000001110011",
    "0000001110100", "0000001110101", "0000001110110", "0000001110111", "0000001010010",
    "0000001010011", "0000001010100", "0000001010101", "0000001011010", "0000001011011",
    "0000001100100", "0000001100101"};

// Make-up codes for 1792, 1856, ... 2560, shared by both colours.
const char* const kSharedMakeup[13] = {
    "00000001000",  "00000001100",  "00000001101",  "000000010010", "000000010011",
    "000000010100", "000000010101", "000000010110", "000000010111", "000000011100",
    "000000011101", "000000011110", "000000011111"};

UInt32 PatternBits(const char* pattern, int len) {
    UInt32 v = 0;
    for (int i = 0; i < len; ++i) v = (v << 1) | UInt32(pattern[i] == '1');
    return v;
}

UInt8 Length(const char* pattern) { return static_cast<UInt8>(std::strlen(pattern)); }

void AddRuns(RunTable& t, const char* const* term, const char* const* makeup) {
    for (int i = 0; i < 64; ++i) t.Add(term[i], Code{Int16(i), Length(term[i]), e_term});
    for (int i = 0; i < 27; ++i)
        t.Add(makeup[i], Code{Int16(64 * (i + 1)), Length(makeup[i]), e_makeup});
    for (int i = 0; i < 13; ++i)
        t.Add(kSharedMakeup[i], Code{Int16(1792 + 64 * i), Length(kSharedMakeup[i]), e_makeup});
    // Eleven zeros start an end-of-line code (with fill, more zeros come first); eight zeros
    // and a one start a one-dimensional extension code of 12 bits.
    t.Add("00000000000", Code{0, 12, e_eol});
    t.Add("000000001", Code{0, 12, e_ext});
}

struct ModeTable {
    Code codes[1 << kModeLookupBits];

    ModeTable() {
        struct ModeCode {
            const char* pattern;
            Code code;
        };
        const ModeCode modes[] = {
            {"1", {0, 1, e_vert}},       {"011", {1, 3, e_vert}},     {"010", {-1, 3, e_vert}},
            {"001", {0, 3, e_horiz}},    {"0001", {0, 4, e_pass}},    {"000011", {2, 6, e_vert}},
            {"000010", {-2, 6, e_vert}}, {"0000011", {3, 7, e_vert}}, {"0000010", {-3, 7, e_vert}},
            // Seven bits of an extension code: 0000001 and three more.
            {"0000001", {0, 10, e_ext}}, {"0000000", {0, 12, e_eol}},
        };
        for (const ModeCode& m : modes) {
            const int len = Length(m.pattern);
            const UInt32 first = PatternBits(m.pattern, len) << (kModeLookupBits - len);
            for (UInt32 i = 0; i < (1u << (kModeLookupBits - len)); ++i) codes[first + i] = m.code;
        }
    }
};

}  // namespace

RunTable::RunTable(int lookup_bits)
    : m_sub_bits(lookup_bits - 8), m_sub_mask((1u << (lookup_bits - 8)) - 1) {
    for (Code& c : m_first) c = Code{0, 1, e_invalid};
}

void RunTable::Add(const char* pattern, Code code) {
    const int len = Length(pattern);
    const UInt32 v = PatternBits(pattern, len);
    if (len <= 8) {
        const UInt32 first = v << (8 - len);
        for (UInt32 i = 0; i < (1u << (8 - len)); ++i) m_first[first + i] = code;
        return;
    }
    Code& link = m_first[v >> (len - 8)];
    if (link.kind != e_link) {
        link = Code{static_cast<Int16>(m_second.size()), 8, e_link};
        m_second.resize(m_second.size() + (size_t(1) << m_sub_bits), Code{0, 1, e_invalid});
    }
    const int rest_len = len - 8;
    const UInt32 rest = (v & ((1u << rest_len) - 1)) << (m_sub_bits - rest_len);
    for (UInt32 i = 0; i < (1u << (m_sub_bits - rest_len)); ++i)
        m_second[size_t(link.param) + rest + i] = code;
}

const RunTable& WhiteCodes() {
    static const RunTable table = [] {
        RunTable t(kWhiteLookupBits);
        AddRuns(t, kWhiteTerm, kWhiteMakeup);
        return t;
    }();
    return table;
}

const RunTable& BlackCodes() {
    static const RunTable table = [] {
        RunTable t(kBlackLookupBits);
        AddRuns(t, kBlackTerm, kBlackMakeup);
        return t;
    }();
    return table;
}

const Code* ModeCodes() {
    static const ModeTable table;
    return table.codes;
}

}  // namespace lum::Filters::Fax
