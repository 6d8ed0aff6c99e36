#include "KUVCommand.h"

#include <algorithm>
#include <new>

KUV_IMPLEMENT_CLASS(KUVNotification, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVEventSubscriber, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVCommand, KUVEventSubscriber, "KUVHost")

KUVNotification::KUVNotification() = default;
KUVNotification::~KUVNotification() = default;

KUVEventSubscriber::KUVEventSubscriber() = default;
KUVEventSubscriber::~KUVEventSubscriber() = default;

KUVCallbackManager* KUVEventSubscriber::GetCallbackManager() { return nullptr; }

KUVCommand::KUVCommand(KUVCommand* parent, const KUVString& name) : name_(name)
{
    if (parent)
        parent->children_.push_back(this);
    parent_ = parent;
}

KUVCommand::~KUVCommand()
{
    for (KUVCommand* const child : children_)
        child->parent_ = nullptr;
    if (parent_) {
        std::vector<KUVCommand*>& siblings = parent_->children_;
        siblings.erase(std::find(siblings.begin(), siblings.end(), this));
    }
}

KUVCallbackManager* KUVCommand::GetCallbackManager()
{
    if (!callbackManager_) {
        try {
            callbackManager_ = std::make_unique<KUVCallbackManager>();
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    }
    return callbackManager_.get();
}
