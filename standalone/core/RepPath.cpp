#include "KUV3D.h"

#include <memory>
#include <utility>

KUV_IMPLEMENT_CLASS(KUVRepPath, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVPickPath, KUVRepPath, "KUVHost")

// ---- run of reps

/// Reps are only ever appended while several runs share them: each run sees the beginning that it
/// counts, so what another one appends does not concern it.
struct KUVRepRun::Storage {
    std::uint32_t users = 1;
    std::vector<KUVRep*> reps;

    std::size_t Size() const { return reps.size(); }

    void Append(KUVRep* rep)
    {
        reps.push_back(rep);
        rep->AddRef();
    }

    void CutTo(std::size_t size)
    {
        while (reps.size() > size) {
            KUVRep* const last = reps.back();
            reps.pop_back();
            last->Release();
        }
    }
};

void KUVRepRun::Drop(Storage* storage)
{
    if (!storage || --storage->users != 0)
        return;
    storage->CutTo(0);
    delete storage;
}

KUVRepRun::KUVRepRun(const KUVRepRun& other) : storage_(other.storage_), count_(other.count_)
{
    if (storage_)
        ++storage_->users;
}

KUVRepRun& KUVRepRun::operator=(const KUVRepRun& other)
{
    KUVRepRun copy(other);
    std::swap(storage_, copy.storage_);
    std::swap(count_, copy.count_);
    return *this;
}

KUVRepRun::~KUVRepRun() { Drop(storage_); }

KUVRep* KUVRepRun::operator[](int index) const
{
    return index >= 0 && index < count_ ? storage_->reps[static_cast<std::size_t>(index)] : nullptr;
}

void KUVRepRun::Append(KUVRep* rep)
{
    const std::size_t count = static_cast<std::size_t>(count_);
    if (!storage_)
        storage_ = new Storage;
    if (storage_->users == 1)
        storage_->CutTo(count);
    if (storage_->Size() == count) {
        storage_->Append(rep);
    } else if (storage_->reps[count] != rep) {
        auto own = std::make_unique<Storage>();
        own->reps.reserve(count + 1);
        for (std::size_t i = 0; i < count; ++i)
            own->Append(storage_->reps[i]);
        own->Append(rep);
        Drop(std::exchange(storage_, own.release()));
    }
    ++count_;
}

void KUVRepRun::AppendSharing(KUVRep* rep, const KUVRepRun& other)
{
    const bool begins = storage_ == other.storage_ || count_ == 0;
    if (!begins || other[count_] != rep) {
        Append(rep);
        return;
    }
    if (storage_ != other.storage_) {
        ++other.storage_->users;
        Drop(std::exchange(storage_, other.storage_));
    }
    ++count_;
}

void KUVRepRun::RemoveAt(int index)
{
    if (index < 0 || index >= count_)
        return;
    const std::size_t count = static_cast<std::size_t>(count_);
    const std::size_t place = static_cast<std::size_t>(index);
    if (storage_->users == 1) {
        storage_->CutTo(count);
        KUVRep* const removed = storage_->reps[place];
        storage_->reps.erase(storage_->reps.begin() + index);
        --count_;
        removed->Release();
        return;
    }
    if (place + 1 < count) {
        auto own = std::make_unique<Storage>();
        own->reps.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            if (i != place)
                own->Append(storage_->reps[i]);
        }
        Drop(std::exchange(storage_, own.release()));
    }
    --count_;
}

void KUVRepRun::Empty()
{
    count_ = 0;
    Drop(std::exchange(storage_, nullptr));
}

// ---- rep path

KUVRepPath::KUVRepPath() = default;
KUVRepPath::~KUVRepPath() = default;

KUVRepPath::KUVRepPath(const KUVRepPath& other)
    : KUVBaseUnknown(other), reps_(other.reps_), subElements_(other.subElements_),
      cursor_(other.cursor_), locked_(other.locked_)
{
}

KUVRepPath& KUVRepPath::operator=(const KUVRepPath& other)
{
    if (this == &other)
        return *this;
    subElements_ = other.subElements_;  // The only step that can fail comes first.
    reps_ = other.reps_;
    cursor_ = other.cursor_;
    locked_ = other.locked_;
    return *this;
}

int KUVRepPath::Size() const { return locked_ ? 0 : reps_.Count(); }

int KUVRepPath::GetCursorPosition() const { return locked_ ? -1 : cursor_; }

KUVRep* KUVRepPath::GetCurrentRep() const { return locked_ ? nullptr : reps_[cursor_]; }

KUVRep* KUVRepPath::operator[](int index) const { return locked_ ? nullptr : reps_[index]; }

const list<int>* KUVRepPath::GetSubElementList() const
{
    static const list<int> nothing;
    return locked_ ? &nothing : &subElements_;
}

KUVViewpoint* KUVRepPath::GetViewpoint() const { return nullptr; }

unsigned char KUVRepPath::Contains(const KUVRepPath& other) const
{
    const int wanted = other.Size();
    const int size = Size();
    for (int first = 0; first + wanted <= size; ++first) {
        int same = 0;
        while (same < wanted && reps_[first + same] == other.reps_[same])
            ++same;
        if (same == wanted)
            return 1;
    }
    return wanted == 0;
}

void KUVRepPath::InitToTopRep() { cursor_ = -1; }

void KUVRepPath::InitToLeafRep() { cursor_ = reps_.Count(); }

KUVRep* KUVRepPath::NextChildRep()
{
    KUVRep* const next = reps_[cursor_ + 1];
    if (next)
        ++cursor_;
    return next;
}

KUVRep* KUVRepPath::NextFatherRep()
{
    KUVRep* const next = reps_[cursor_ - 1];
    if (next)
        --cursor_;
    return next;
}

void KUVRepPath::AddRep(KUVRep* rep, int /*reserved*/)
{
    if (!rep)
        return;
    reps_.Append(rep);
    cursor_ = reps_.Count() - 1;
}

void KUVRepPath::RemoveRep(KUVRep* rep)
{
    if (!rep)
        return;
    int place = reps_.Count() - 1;
    while (place >= 0 && reps_[place] != rep)
        --place;
    if (place < 0)
        return;
    reps_.RemoveAt(place);
    if (cursor_ > place || cursor_ == reps_.Count())
        --cursor_;
}

void KUVRepPath::Empty()
{
    reps_.Empty();
    cursor_ = -1;
}

void KUVRepPath::Load(const list<int>& subElements) { subElements_ = subElements; }

unsigned char KUVRepPath::UnlockPath() { return std::exchange(locked_, false); }

// ---- pick path

KUVPickPath::KUVPickPath() = default;

KUVPickPath::KUVPickPath(KUVViewpoint* viewpoint) : viewpoint_(viewpoint)
{
    if (viewpoint_)
        viewpoint_->AddRef();
}

KUVPickPath::KUVPickPath(const KUVPickPath& other)
    : KUVRepPath(other), viewpoint_(other.viewpoint_), stack_(other.stack_),
      intersection_(other.intersection_), normal_(other.normal_),
      globalNormal_(other.globalNormal_), hasGlobalNormal_(other.hasGlobalNormal_),
      interactiveContext_(other.interactiveContext_)
{
    if (viewpoint_)
        viewpoint_->AddRef();
}

KUVPickPath& KUVPickPath::operator=(const KUVPickPath& other)
{
    if (this == &other)
        return *this;
    KUVRepPath::operator=(other);
    if (other.viewpoint_)
        other.viewpoint_->AddRef();
    KUVViewpoint* const former = std::exchange(viewpoint_, other.viewpoint_);
    stack_ = other.stack_;
    intersection_ = other.intersection_;
    normal_ = other.normal_;
    globalNormal_ = other.globalNormal_;
    hasGlobalNormal_ = other.hasGlobalNormal_;
    interactiveContext_ = other.interactiveContext_;
    if (former)
        former->Release();
    return *this;
}

KUVPickPath::~KUVPickPath()
{
    if (viewpoint_)
        viewpoint_->Release();
}

KUVViewpoint* KUVPickPath::GetViewpoint() const { return IsLocked() ? nullptr : viewpoint_; }

void KUVPickPath::Push(KUVRep* rep)
{
    // Paths are filled by adding and pushing the same reps: then the stack costs no memory.
    if (rep)
        stack_.AppendSharing(rep, Reps());
}

void KUVPickPath::Pop() { stack_.RemoveAt(stack_.Count() - 1); }

KUVRep* KUVPickPath::GetTopRep() const { return stack_[stack_.Count() - 1]; }

void KUVPickPath::SetGlobalNormal(const KUVMathDirectionf& normal)
{
    globalNormal_ = normal;
    hasGlobalNormal_ = true;
}
