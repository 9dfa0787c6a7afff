#pragma once
namespace lum::SDF {
class DocImpl;

// The low-level document as the layers above hold it.
class SDFDoc {
public:
    DocImpl* GetImpl() const { return mp_impl; }

private:
    DocImpl* mp_impl = nullptr;
    bool m_owns_impl = true;
};

}  // namespace lum::SDF
