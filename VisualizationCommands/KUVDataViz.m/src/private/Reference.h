#ifndef Reference_h
#define Reference_h

#include <utility>

/// Holds one reference on a host object, or nothing, and gives it back at the end.
template <class T>
class VisReference {
public:
    VisReference() = default;
    VisReference(VisReference&& other) noexcept : object_(other.Detach()) {}
    VisReference& operator=(VisReference&& other) noexcept
    {
        VisReference(std::move(other)).Swap(*this);
        return *this;
    }
    ~VisReference()
    {
        if (object_)
            object_->Release();
    }

    /// Takes over a reference that exists already. Null gives an empty holder.
    static VisReference Adopt(T* object)
    {
        VisReference holder;
        holder.object_ = object;
        return holder;
    }
    /// Takes a reference of its own. Null gives an empty holder.
    static VisReference Retain(T* object)
    {
        if (object)
            object->AddRef();
        return Adopt(object);
    }
    /// Hands the reference over to the caller.
    T* Detach() { return std::exchange(object_, nullptr); }

    T* Get() const { return object_; }
    T* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    void Swap(VisReference& other) noexcept { std::swap(object_, other.object_); }

    T* object_ = nullptr;
};

#endif
