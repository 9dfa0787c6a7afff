#include "PDF/Color/Function.h"

#include <algorithm>
#include <cmath>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/FilterReader.h"
#include "PDF/Color/FunctionCalculator.h"
#include "SDF/Obj.h"

namespace lum::PDF::Color {

namespace {

double Interpolate(double x, double x0, double x1, double y0, double y1) {
    return x1 == x0 ? y0 : y0 + (x - x0) * (y1 - y0) / (x1 - x0);
}

double NumberOr(SDF::Obj* dict, const SDF::Name& key, double fallback) {
    SDF::Obj* v = dict->FindObj(key);
    return v && v->IsNumber() ? v->GetNumber() : fallback;
}

// Type 0: a table of samples, interpolated between the points around the input.
class SampledFunction final : public Function {
public:
    explicit SampledFunction(SDF::Obj* stream) {
        m_domain = ReadNumbers(stream->FindObj(SDF::e_Domain));
        m_range = ReadNumbers(stream->FindObj(SDF::e_Range));
        const int m = InputCount(), n = OutputCount();
        LUM_CHECK(m > 0 && n > 0, "Sampled function without Domain or Range");
        const std::vector<double> size = ReadNumbers(stream->FindObj(SDF::e_Size));
        LUM_CHECK(int(size.size()) >= m, "Sampled function without Size");
        UInt64 total = UInt64(n);
        for (int i = 0; i < m; ++i) {
            LUM_CHECK(size[i] >= 1 && size[i] <= double(Limits::kMaxFunctionSamples),
                      "Bad sampled function Size");
            m_size.push_back(UInt32(size[i]));
            total *= m_size.back();
            LUM_CHECK(total <= Limits::kMaxFunctionSamples, "Sampled function too large");
        }
        const int bps = int(NumberOr(stream, SDF::e_BitsPerSample, 0));
        LUM_CHECK(bps == 1 || bps == 2 || bps == 4 || bps == 8 || bps == 12 || bps == 16 ||
                      bps == 24 || bps == 32,
                  "Bad BitsPerSample");
        m_encode = ReadNumbers(stream->FindObj(SDF::e_Encode));
        if (int(m_encode.size()) < 2 * m) {
            m_encode.clear();
            for (int i = 0; i < m; ++i) m_encode.insert(m_encode.end(), {0, double(m_size[i] - 1)});
        }
        m_decode = ReadNumbers(stream->FindObj(SDF::e_Decode));
        if (int(m_decode.size()) < 2 * n) m_decode = m_range;
        ReadSamples(stream, bps, total);
    }

protected:
    void Compute(const double* in, double* out) const override {
        const int m = InputCount(), n = OutputCount();
        // Position in the table along each input, and the lower corner and its weight.
        UInt64 base[Limits::kMaxInterpolatedInputs] = {};
        double frac[Limits::kMaxInterpolatedInputs] = {};
        UInt64 index = 0, stride = UInt64(n);
        UInt64 strides[64];
        for (int i = 0; i < m; ++i) {
            double e = Interpolate(in[i], m_domain[2 * i], m_domain[2 * i + 1], m_encode[2 * i],
                                   m_encode[2 * i + 1]);
            e = std::clamp(e, 0.0, double(m_size[i] - 1));
            const UInt64 lo = UInt64(std::floor(e));
            if (i < Limits::kMaxInterpolatedInputs && m <= Limits::kMaxInterpolatedInputs) {
                base[i] = lo;
                frac[i] = e - double(lo);
            }
            if (i < 64) strides[i] = stride;
            index += (m <= Limits::kMaxInterpolatedInputs ? lo : UInt64(std::lround(e))) * stride;
            stride *= m_size[i];
        }
        for (int j = 0; j < n; ++j) {
            double v = 0;
            if (m > Limits::kMaxInterpolatedInputs) {
                v = m_samples[index + UInt64(j)];
            } else {
                // Each corner of the cell around the point, weighted by its closeness.
                for (UInt32 corner = 0; corner < (1u << m); ++corner) {
                    double w = 1;
                    UInt64 at = UInt64(j);
                    for (int i = 0; i < m; ++i) {
                        const bool up = corner & (1u << i);
                        const UInt64 k = base[i] + (up && base[i] + 1 < m_size[i] ? 1 : 0);
                        w *= up ? frac[i] : 1 - frac[i];
                        at += k * strides[i];
                    }
                    if (w != 0) v += w * m_samples[at];
                }
            }
            out[j] = Interpolate(v, 0, m_max_sample, m_decode[2 * j], m_decode[2 * j + 1]);
        }
    }

private:
    void ReadSamples(SDF::Obj* stream, int bps, UInt64 total) {
        m_samples.assign(size_t(total), 0.0);  // a short stream leaves zeros
        m_max_sample = std::ldexp(1.0, bps) - 1;
        auto filter = stream->GetDecodedStream();
        Filters::FilterReader reader(filter.get());
        UInt64 acc = 0;
        int bits = 0;
        for (UInt64 k = 0; k < total; ++k) {
            while (bits < bps) {
                const int byte = reader.Get();
                if (byte < 0) return;
                acc = (acc << 8) | UInt64(byte);
                bits += 8;
            }
            bits -= bps;
            m_samples[size_t(k)] = double((acc >> bits) & ((UInt64(1) << bps) - 1));
            acc &= (UInt64(1) << bits) - 1;
        }
    }

    std::vector<UInt32> m_size;
    std::vector<double> m_encode, m_decode, m_samples;
    double m_max_sample = 1;
};

// Type 2: C0 + x^N (C1 - C0).
class ExponentialFunction final : public Function {
public:
    explicit ExponentialFunction(SDF::Obj* dict) {
        m_domain = ReadNumbers(dict->FindObj(SDF::e_Domain));
        LUM_CHECK(m_domain.size() >= 2, "Exponential function without Domain");
        m_domain.resize(2);
        m_range = ReadNumbers(dict->FindObj(SDF::e_Range));
        m_c0 = ReadNumbers(dict->FindObj(SDF::e_C0), 64);
        m_c1 = ReadNumbers(dict->FindObj(SDF::e_C1), 64);
        if (m_c0.empty()) m_c0 = {0};
        if (m_c1.empty()) m_c1 = {1};
        m_c1.resize(m_c0.size(), 1);
        m_n = NumberOr(dict, SDF::e_N, 1);
        m_outputs = int(m_c0.size());
    }

protected:
    void Compute(const double* in, double* out) const override {
        double p = std::pow(in[0], m_n);
        if (!std::isfinite(p)) p = 0;
        for (size_t j = 0; j < m_c0.size() && int(j) < OutputCount(); ++j)
            out[j] = m_c0[j] + p * (m_c1[j] - m_c0[j]);
    }

private:
    std::vector<double> m_c0, m_c1;
    double m_n = 1;
};

// Type 3: one of several functions by the subdomain that holds the input.
class StitchingFunction final : public Function {
public:
    StitchingFunction(SDF::Obj* dict, int depth) {
        m_domain = ReadNumbers(dict->FindObj(SDF::e_Domain));
        LUM_CHECK(m_domain.size() >= 2, "Stitching function without Domain");
        m_domain.resize(2);
        m_range = ReadNumbers(dict->FindObj(SDF::e_Range));
        SDF::Obj* fns = dict->FindObj(SDF::e_Functions);
        LUM_CHECK(fns && fns->IsArray() && fns->Size() > 0, "Stitching function without Functions");
        const UInt32 k = UInt32(std::min<UInt64>(fns->Size(), 256));
        for (UInt32 i = 0; i < k; ++i) {
            m_parts.push_back(Create(fns->GetAt(i), depth + 1));
            m_outputs = std::max(m_outputs, m_parts.back()->OutputCount());
        }
        m_bounds = ReadNumbers(dict->FindObj(SDF::e_Bounds));
        m_bounds.resize(k - 1, m_domain[1]);
        m_encode = ReadNumbers(dict->FindObj(SDF::e_Encode));
        m_encode.resize(2 * k, 0);
    }

protected:
    void Compute(const double* in, double* out) const override {
        const double x = in[0];
        size_t i = 0;
        while (i < m_bounds.size() && !(x < m_bounds[i])) ++i;
        const double lo = i == 0 ? m_domain[0] : m_bounds[i - 1];
        const double hi = i == m_bounds.size() ? m_domain[1] : m_bounds[i];
        const double e = Interpolate(x, lo, hi, m_encode[2 * i], m_encode[2 * i + 1]);
        std::fill(out, out + OutputCount(), 0.0);
        m_parts[i]->Eval(&e, 1, out);
    }

private:
    std::vector<std::unique_ptr<Function>> m_parts;
    std::vector<double> m_bounds, m_encode;
};

}  // namespace

std::vector<double> ReadNumbers(SDF::Obj* arr, size_t max) {
    std::vector<double> out;
    if (!arr || !arr->IsArray()) return out;
    const UInt64 n = std::min<UInt64>(arr->Size(), max);
    out.reserve(size_t(n));
    for (UInt64 i = 0; i < n; ++i) {
        SDF::Obj* v = arr->GetAt(UInt32(i));
        out.push_back(v && v->IsNumber() && std::isfinite(v->GetNumber()) ? v->GetNumber() : 0.0);
    }
    return out;
}

std::unique_ptr<Function> Function::Create(SDF::Obj* obj, int depth) {
    LUM_CHECK(depth < Limits::kMaxColorNesting, "Functions nested too deep");
    LUM_CHECK(obj && (obj->IsDict() || obj->IsStream()), "Bad function");
    const double type = NumberOr(obj, SDF::e_FunctionType, -1);
    std::unique_ptr<Function> f;
    if (type == 0 && obj->IsStream()) {
        f = std::make_unique<SampledFunction>(obj);
    } else if (type == 2) {
        f = std::make_unique<ExponentialFunction>(obj);
    } else if (type == 3) {
        f = std::make_unique<StitchingFunction>(obj, depth);
    } else if (type == 4 && obj->IsStream()) {
        f = CreateCalculator(obj);
    }
    LUM_CHECK(f, "Unknown function type");
    // Colour components are at most 32 (DeviceN), and so are a tint transform's ends.
    LUM_CHECK(f->InputCount() >= 1 && f->InputCount() <= 32 && f->OutputCount() >= 1 &&
                  f->OutputCount() <= 32,
              "Bad function size");
    return f;
}

void Function::Eval(const double* in, int in_count, double* out) const {
    const int m = InputCount();
    double clipped[64];
    const int k = std::min(m, 64);
    for (int i = 0; i < k; ++i) {
        const double v = i < in_count && std::isfinite(in[i]) ? in[i] : 0.0;
        clipped[i] = std::clamp(v, std::min(m_domain[2 * i], m_domain[2 * i + 1]),
                                std::max(m_domain[2 * i], m_domain[2 * i + 1]));
    }
    Compute(clipped, out);
    for (int j = 0; j < OutputCount(); ++j) {
        if (!std::isfinite(out[j])) out[j] = 0;
        if (2 * j + 1 < int(m_range.size()))
            out[j] = std::clamp(out[j], std::min(m_range[2 * j], m_range[2 * j + 1]),
                                std::max(m_range[2 * j], m_range[2 * j + 1]));
    }
}

}  // namespace lum::PDF::Color
