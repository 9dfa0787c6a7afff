#include "FilterTestUtil.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <stdexcept>

#include "Filters/FilterReader.h"
#include "support/TrickleFilter.h"

namespace lum::test {

std::unique_ptr<Filters::Filter> Source(const std::string& bytes, size_t window) {
    return std::make_unique<TrickleFilter>(std::vector<UInt8>(bytes.begin(), bytes.end()), std::max<size_t>(window, 1));
}

std::string ReadAll(Filters::Filter& f, size_t chunk) {
    Filters::FilterReader r(&f);
    std::string out;
    std::vector<UInt8> buf(chunk);
    for (;;) {
        size_t n = r.Read(buf.data(), chunk);
        out.append(reinterpret_cast<const char*>(buf.data()), n);
        if (n < chunk) break;
    }
    return out;
}

std::string ReadAll(std::unique_ptr<Filters::Filter> f, size_t chunk) { return ReadAll(*f, chunk); }

std::string TextLike(size_t n, unsigned seed) {
    static const char* kWords[] = {"the ", "filter ", "stream ", "of ", "page ", "text ",
                                   "and ", "12.5 ", "0 0 1 rg\n", "BT /F1 12 Tf ", "(Hello) Tj\n",
                                   "ET\n", "reading ", "order "};
    std::mt19937 rng(seed);
    std::string s;
    s.reserve(n + 16);
    while (s.size() < n) s += kWords[rng() % (sizeof kWords / sizeof *kWords)];
    s.resize(n);
    return s;
}

std::string Noise(size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::string s(n, '\0');
    for (auto& c : s) c = static_cast<char>(rng());
    return s;
}

std::string Deflate(const std::string& data, int level, bool raw) {
    z_stream zs{};
    if (deflateInit2(&zs, level, Z_DEFLATED, raw ? -15 : 15, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::runtime_error("deflateInit2");
    std::string out(deflateBound(&zs, data.size()), '\0');
    zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    zs.avail_in = static_cast<uInt>(data.size());
    zs.next_out = reinterpret_cast<Bytef*>(out.data());
    zs.avail_out = static_cast<uInt>(out.size());
    int rc = deflate(&zs, Z_FINISH);
    deflateEnd(&zs);
    if (rc != Z_STREAM_END) throw std::runtime_error("deflate");
    out.resize(zs.total_out);
    return out;
}

std::string LzwEncode(const std::string& data, int early_change, bool clear_first) {
    std::string out;
    UInt32 bits = 0;
    int count = 0;
    int width = 9;
    auto put = [&](int code) {
        bits = (bits << width) | static_cast<UInt32>(code);
        count += width;
        while (count >= 8) {
            count -= 8;
            out += static_cast<char>((bits >> count) & 0xFF);
        }
    };
    std::map<std::string, int> dict;
    int next = 258;
    auto reset = [&] {
        dict.clear();
        for (int i = 0; i < 256; ++i) dict[std::string(1, static_cast<char>(i))] = i;
        next = 258;
    };
    reset();
    if (clear_first) put(256);
    std::string w;
    for (char c : data) {
        std::string wc = w + c;
        if (dict.count(wc)) {
            w = wc;
            continue;
        }
        put(dict[w]);
        dict[wc] = next++;
        // The decoder widens when its own next code (one behind ours) reaches the boundary.
        if (next + early_change == 513) width = 10;
        else if (next + early_change == 1025) width = 11;
        else if (next + early_change == 2049) width = 12;
        if (next >= 4094) {
            put(256);
            reset();
            width = 9;
        }
        w = std::string(1, c);
    }
    if (!w.empty()) put(dict[w]);
    put(257);
    if (count > 0) out += static_cast<char>((bits << (8 - count)) & 0xFF);
    return out;
}

std::string Ascii85Encode(const std::string& data) {
    std::string out;
    size_t i = 0;
    for (; i + 4 <= data.size(); i += 4) {
        UInt32 v = 0;
        for (int k = 0; k < 4; ++k) v = (v << 8) | static_cast<UInt8>(data[i + k]);
        if (v == 0) {
            out += 'z';
            continue;
        }
        char g[5];
        for (int k = 4; k >= 0; --k) {
            g[k] = static_cast<char>('!' + v % 85);
            v /= 85;
        }
        out.append(g, 5);
    }
    size_t rest = data.size() - i;
    if (rest) {
        UInt32 v = 0;
        for (size_t k = 0; k < 4; ++k)
            v = (v << 8) | (k < rest ? static_cast<UInt8>(data[i + k]) : 0);
        char g[5];
        for (int k = 4; k >= 0; --k) {
            g[k] = static_cast<char>('!' + v % 85);
            v /= 85;
        }
        out.append(g, rest + 1);
    }
    out += "~>";
    return out;
}

std::string RunLengthEncode(const std::string& data) {
    std::string out;
    size_t i = 0;
    while (i < data.size()) {
        size_t run = 1;
        while (i + run < data.size() && run < 128 && data[i + run] == data[i]) ++run;
        if (run >= 2) {
            out += static_cast<char>(257 - run);
            out += data[i];
            i += run;
            continue;
        }
        size_t lit = 1;
        while (i + lit < data.size() && lit < 128 &&
               !(i + lit + 1 < data.size() && data[i + lit] == data[i + lit + 1]))
            ++lit;
        out += static_cast<char>(lit - 1);
        out.append(data, i, lit);
        i += lit;
    }
    out += static_cast<char>(128);
    return out;
}

std::string PngEncode(const std::string& data, size_t row_size, size_t ps,
                      const std::vector<int>& tags) {
    std::string out;
    std::vector<int> prev(row_size, 0);
    for (size_t r = 0; r * row_size < data.size(); ++r) {
        size_t n = std::min(row_size, data.size() - r * row_size);
        int tag = tags[r % tags.size()];
        out += static_cast<char>(tag);
        std::vector<int> cur(row_size, 0);
        for (size_t i = 0; i < n; ++i) cur[i] = static_cast<UInt8>(data[r * row_size + i]);
        for (size_t i = 0; i < n; ++i) {
            int a = i >= ps ? cur[i - ps] : 0, b = prev[i], c = i >= ps ? prev[i - ps] : 0;
            int pred = 0;
            switch (tag) {
                case 1: pred = a; break;
                case 2: pred = b; break;
                case 3: pred = (a + b) / 2; break;
                case 4: {
                    int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
                    pred = (pa <= pb && pa <= pc) ? a : (pb <= pc ? b : c);
                    break;
                }
                default: break;
            }
            out += static_cast<char>((cur[i] - pred) & 0xFF);
        }
        prev = cur;
    }
    return out;
}

std::string TiffEncode(const std::string& data, unsigned columns, unsigned colors, unsigned bits) {
    size_t row_size = (static_cast<size_t>(columns) * colors * bits + 7) / 8;
    std::string out = data;
    UInt64 mask = bits >= 32 ? 0xFFFFFFFFull : ((1ull << bits) - 1);
    auto get = [&](const std::string& s, size_t base, size_t bitpos) {
        UInt64 v = 0;
        for (unsigned k = 0; k < bits; ++k) {
            size_t p = bitpos + k;
            v = (v << 1) | ((static_cast<UInt8>(s[base + p / 8]) >> (7 - p % 8)) & 1);
        }
        return v;
    };
    auto set = [&](std::string& s, size_t base, size_t bitpos, UInt64 v) {
        for (unsigned k = 0; k < bits; ++k) {
            size_t p = bitpos + k;
            UInt8 bit = (v >> (bits - 1 - k)) & 1;
            UInt8& byte = reinterpret_cast<UInt8&>(s[base + p / 8]);
            byte = static_cast<UInt8>((byte & ~(0x80 >> (p % 8))) | (bit << (7 - p % 8)));
        }
    };
    for (size_t base = 0; base + row_size <= data.size(); base += row_size) {
        for (unsigned x = columns; x-- > 1;) {
            for (unsigned c = 0; c < colors; ++c) {
                size_t here = (static_cast<size_t>(x) * colors + c) * bits;
                size_t left = here - static_cast<size_t>(colors) * bits;
                set(out, base, here, (get(data, base, here) - get(data, base, left)) & mask);
            }
        }
    }
    return out;
}

}  // namespace lum::test
