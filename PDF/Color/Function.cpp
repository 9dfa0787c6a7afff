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

constexpr int kMax = Function::kMaxValues;

double Interpolate(double x, double x0, double x1, double y0, double y1) {
    return x1 == x0 ? y0 : y0 + (x - x0) * (y1 - y0) / (x1 - x0);
}

double NumberOr(SDF::Obj* dict, const SDF::Name& key, double fallback) {
    SDF::Obj* v = dict->FindObj(key);
    return v && v->IsNumber() && std::isfinite(v->GetNumber()) ? v->GetNumber() : fallback;
}

// Domain (2 per input) and Range (2 per output) of a function that needs both.
void ReadDomainAndRange(SDF::Obj* dict, std::vector<double>& domain, std::vector<double>& range) {
    domain = ReadNumbers(dict->FindObj(SDF::e_Domain), 2 * kMax + 1);
    range = ReadNumbers(dict->FindObj(SDF::e_Range), 2 * kMax + 1);
    LUM_CHECK(domain.size() >= 2 && domain.size() <= 2 * kMax, "Bad function Domain");
    LUM_CHECK(range.size() >= 2 && range.size() <= 2 * kMax, "Bad function Range");
    domain.resize(domain.size() / 2 * 2);
    range.resize(range.size() / 2 * 2);
}

// Type 0: a table of samples, interpolated between the points around the input.
class SampledFunction final : public Function {
public:
    explicit SampledFunction(SDF::Obj* stream) {
        LUM_CHECK(stream->IsStream(), "A sampled function must be a stream");
        ReadDomainAndRange(stream, m_domain, m_range);
        const int m = InputCount(), n = OutputCount();
        const std::vector<double> size = ReadNumbers(stream->FindObj(SDF::e_Size), kMax);
        LUM_CHECK(int(size.size()) == m, "Sampled function needs a Size per input");
        UInt64 total = UInt64(n);
        for (int i = 0; i < m; ++i) {
            LUM_CHECK(size[size_t(i)] >= 1 && size[size_t(i)] <= double(Limits::kMaxFunctionSamples),
                      "Bad sampled function Size");
            m_size.push_back(UInt32(size[size_t(i)]));
            total *= m_size.back();
            LUM_CHECK(total <= Limits::kMaxFunctionSamples, "Sampled function larger than %llu values",
                      static_cast<unsigned long long>(Limits::kMaxFunctionSamples));
        }
        const double bps = NumberOr(stream, SDF::e_BitsPerSample, 0);
        LUM_CHECK(bps == 1 || bps == 2 || bps == 4 || bps == 8 || bps == 12 || bps == 16 ||
                      bps == 24 || bps == 32,
                  "Bad BitsPerSample");
        m_encode = ReadNumbers(stream->FindObj(SDF::e_Encode), size_t(2 * m));
        if (int(m_encode.size()) != 2 * m) {
            m_encode.clear();
            for (int i = 0; i < m; ++i) m_encode.insert(m_encode.end(), {0, double(m_size[size_t(i)] - 1)});
        }
        m_decode = ReadNumbers(stream->FindObj(SDF::e_Decode), size_t(2 * n));
        if (int(m_decode.size()) != 2 * n) m_decode = m_range;
        ReadSamples(stream, int(bps), total);
    }

protected:
    void Compute(const double* in, double* out) const override {
        const int m = InputCount(), n = OutputCount();
        // The cell around the point: its lower corner, and the inputs that lie inside a cell
        // (not on a sample), with their weights. Beyond kMaxInterpolatedInputs of those, the
        // nearest sample stands in.
        UInt64 base = 0, stride = UInt64(n);
        UInt64 strides[kMax];
        double frac[kMax];
        int k = 0;
        for (int i = 0; i < m; ++i) {
            const double top = double(m_size[size_t(i)] - 1);
            double e = Interpolate(in[i], m_domain[size_t(2 * i)], m_domain[size_t(2 * i + 1)],
                                   m_encode[size_t(2 * i)], m_encode[size_t(2 * i + 1)]);
            e = e > 0 ? (e < top ? e : top) : 0;  // not a number: 0
            const double lo = std::floor(e);
            base += UInt64(lo) * stride;
            if (e > lo) {
                strides[k] = stride;
                frac[k] = e - lo;
                ++k;
            }
            stride *= m_size[size_t(i)];
        }
        if (k > Limits::kMaxInterpolatedInputs) {
            for (int j = 0; j < k; ++j)
                if (frac[j] >= 0.5) base += strides[j];
            k = 0;
        }
        for (int j = 0; j < n; ++j) {
            double v = 0;
            for (UInt32 corner = 0; corner < (1u << k); ++corner) {
                double w = 1;
                UInt64 at = base + UInt64(j);
                for (int i = 0; i < k; ++i) {
                    const bool up = corner & (1u << i);
                    w *= up ? frac[i] : 1 - frac[i];
                    if (up) at += strides[i];
                }
                v += w * m_samples[size_t(at)];
            }
            out[j] = Interpolate(v, 0, m_max_sample, m_decode[size_t(2 * j)], m_decode[size_t(2 * j + 1)]);
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
        for (UInt64 s = 0; s < total; ++s) {
            while (bits < bps) {
                const int byte = reader.Get();
                if (byte < 0) return;
                acc = (acc << 8) | UInt64(byte);
                bits += 8;
            }
            bits -= bps;
            m_samples[size_t(s)] = double((acc >> bits) & ((UInt64(1) << bps) - 1));
            acc &= (UInt64(1) << bits) - 1;
        }
    }

    std::vector<UInt32> m_size;
    std::vector<double> m_encode, m_decode, m_samples;
    double m_max_sample = 1;
};

// Type 2: C0 + x^N (C1 - C0), one input.
class ExponentialFunction final : public Function {
public:
    explicit ExponentialFunction(SDF::Obj* dict) {
        m_domain = ReadNumbers(dict->FindObj(SDF::e_Domain), 3);
        LUM_CHECK(m_domain.size() >= 2, "Exponential function without Domain");
        m_domain.resize(2);
        m_range = ReadNumbers(dict->FindObj(SDF::e_Range), 2 * kMax + 1);
        LUM_CHECK(m_range.size() <= 2 * kMax, "Bad function Range");
        m_range.resize(m_range.size() / 2 * 2);
        m_c0 = ReadNumbers(dict->FindObj(SDF::e_C0), kMax + 1);
        m_c1 = ReadNumbers(dict->FindObj(SDF::e_C1), kMax + 1);
        if (m_c0.empty()) m_c0 = {0};
        if (m_c1.empty()) m_c1 = {1};
        const size_t outputs = std::max(m_c0.size(), m_c1.size());
        LUM_CHECK(outputs <= size_t(kMax), "Exponential function with more than %d outputs", kMax);
        m_c0.resize(outputs, 0);
        m_c1.resize(outputs, 1);
        m_n = NumberOr(dict, SDF::e_N, 1);
        m_outputs = int(outputs);
    }

protected:
    void Compute(const double* in, double* out) const override {
        double p = std::pow(in[0], m_n);
        if (!std::isfinite(p)) p = 0;
        for (int j = 0; j < OutputCount(); ++j)
            out[j] = j < int(m_c0.size()) ? m_c0[size_t(j)] + p * (m_c1[size_t(j)] - m_c0[size_t(j)]) : 0;
    }

private:
    std::vector<double> m_c0, m_c1;
    double m_n = 1;
};

// Type 3: one of several functions by the subdomain that holds the input.
class StitchingFunction final : public Function {
public:
    StitchingFunction(SDF::Obj* dict, int depth) {
        m_domain = ReadNumbers(dict->FindObj(SDF::e_Domain), 3);
        LUM_CHECK(m_domain.size() >= 2, "Stitching function without Domain");
        m_domain.resize(2);
        m_range = ReadNumbers(dict->FindObj(SDF::e_Range), 2 * kMax + 1);
        LUM_CHECK(m_range.size() <= 2 * kMax, "Bad function Range");
        m_range.resize(m_range.size() / 2 * 2);
        SDF::Obj* fns = dict->FindObj(SDF::e_Functions);
        LUM_CHECK(fns && fns->IsArray() && fns->Size() > 0, "Stitching function without Functions");
        LUM_CHECK(fns->Size() <= Limits::kMaxStitchedFunctions, "Stitching function of more than %d parts",
                  int(Limits::kMaxStitchedFunctions));
        const size_t k = size_t(fns->Size());
        for (size_t i = 0; i < k; ++i) {
            m_parts.push_back(Open(fns->GetAt(UInt32(i)), depth + 1));
            m_outputs = std::max(m_outputs, m_parts.back()->OutputCount());
        }
        m_bounds = ReadNumbers(dict->FindObj(SDF::e_Bounds), k - 1);
        m_bounds.resize(k - 1, m_domain[1]);
        m_encode = ReadNumbers(dict->FindObj(SDF::e_Encode), 2 * k);
        m_encode.resize(m_encode.size() / 2 * 2);
        while (m_encode.size() < 2 * k) m_encode.insert(m_encode.end(), {0, 1});
    }

protected:
    void Compute(const double* in, double* out) const override {
        const double x = in[0];
        size_t i = 0;
        while (i < m_bounds.size() && !(x < m_bounds[i])) ++i;
        const double lo = i == 0 ? m_domain[0] : m_bounds[i - 1];
        const double hi = i == m_bounds.size() ? m_domain[1] : m_bounds[i];
        const double e = Interpolate(x, lo, hi, m_encode[2 * i], m_encode[2 * i + 1]);
        std::fill(out, out + kMax, 0.0);
        m_parts[i]->Eval(&e, 1, out);
    }

private:
    std::vector<FunctionRef> m_parts;
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

Function* Function::Create(SDF::Obj* obj, int depth) {
    LUM_CHECK(depth < Limits::kMaxColorNesting, "Functions nested too deep");
    LUM_CHECK(obj && (obj->IsDict() || obj->IsStream()), "A function must be a dictionary or stream");
    const double type = NumberOr(obj, SDF::e_FunctionType, -1);
    Function* f = nullptr;
    if (type == 0) {
        f = new SampledFunction(obj);
    } else if (type == 2) {
        f = new ExponentialFunction(obj);
    } else if (type == 3) {
        f = new StitchingFunction(obj, depth);
    } else if (type == 4) {
        f = CreateCalculator(obj);
    }
    LUM_CHECK(f, "Unknown function type");
    if (f->InputCount() < 1 || f->InputCount() > kMax || f->OutputCount() < 1 || f->OutputCount() > kMax) {
        delete f;
        LUM_FAIL("A function needs 1 to %d inputs and outputs", kMax);
    }
    return f;
}

FunctionRef Function::Open(SDF::Obj* obj, int depth) {
    LUM_CHECK(obj, "A function must be a dictionary or stream");
    SDF::SharedResource* res =
        SDF::OpenSharedResource(obj, [depth](SDF::Obj* o) -> SDF::SharedResource* { return Create(o, depth); });
    auto* f = dynamic_cast<Function*>(res);
    if (!f) {
        // The object was opened as something else (a font, a colour space): one of its own.
        res->Release();
        f = Create(obj, depth);
        f->AddRef();
    }
    return FunctionRef(f);
}

void Function::Eval(const double* in, int in_count, double* out) const {
    const int m = InputCount();
    double clipped[kMax];
    for (int i = 0; i < m; ++i) {
        const double v = i < in_count && std::isfinite(in[i]) ? in[i] : 0.0;
        const double a = m_domain[size_t(2 * i)], b = m_domain[size_t(2 * i + 1)];
        clipped[i] = std::clamp(v, std::min(a, b), std::max(a, b));
    }
    Compute(clipped, out);
    for (int j = 0; j < OutputCount(); ++j) {
        if (!std::isfinite(out[j])) out[j] = 0;
        if (size_t(2 * j + 1) < m_range.size()) {
            const double a = m_range[size_t(2 * j)], b = m_range[size_t(2 * j + 1)];
            out[j] = std::clamp(out[j], std::min(a, b), std::max(a, b));
        }
    }
}

}  // namespace lum::PDF::Color
