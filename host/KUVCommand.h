#ifndef KUVCommand_h
#define KUVCommand_h

// Commands, their callback managers, and notifications.

#include "KUVExport.h"
#include "KUVObjectModel.h"
#include "KUVStringsMath.h"

#include <functional>
#include <memory>
#include <vector>

/// Base of everything that is sent to listeners. Usually made on the stack for one dispatch;
/// listeners do not keep it.
class KUV_EXPORT KUVNotification : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    KUVNotification();
    ~KUVNotification() override;
};

/// What a listener is called with: the event's name, the notification (null for events without
/// payload) and the sender.
using KUVCallback =
    std::function<void(const char* name, KUVNotification* notification, KUVBaseUnknown* sender)>;

/// Designates a subscription; 0 designates none.
using KUVSubscription = unsigned int;

/// Delivers named events to the listeners that subscribed to them, synchronously, in the order of
/// subscription.
///
/// A listener may subscribe, unsubscribe and destroy the sender or this manager while a dispatch
/// runs: a dispatch walks the listeners that were subscribed when it began and skips those that
/// have been unsubscribed since. It ends when the manager was destroyed, because the sender that
/// the remaining listeners would be given is then usually gone as well.
class KUV_EXPORT KUVCallbackManager {
public:
    KUVCallbackManager();
    virtual ~KUVCallbackManager();
    KUVCallbackManager(const KUVCallbackManager&) = delete;
    KUVCallbackManager& operator=(const KUVCallbackManager&) = delete;

    /// Calls every listener of `name` whose sender is `sender` or null. `notification` may be null;
    /// a null `name` does nothing.
    virtual void DispatchCallbacks(const char* name, KUVNotification* notification,
                                   KUVBaseUnknown* sender);

    /// Calls `callback` for every event `name` of `sender`; a null `sender` stands for all senders.
    /// Nothing is referenced. Gives 0, and subscribes nothing, for a null name or an empty
    /// callback. Throws `std::bad_alloc`, and subscribes nothing, when memory runs out.
    virtual KUVSubscription Subscribe(const char* name, const KUVBaseUnknown* sender,
                                      KUVCallback callback);
    /// Ends a subscription. One that is not there is ignored.
    virtual void Unsubscribe(KUVSubscription subscription);

private:
    struct State;
    std::shared_ptr<State> state_;
};

/// Base of the objects that take part in the delivery of events.
class KUV_EXPORT KUVEventSubscriber : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    ~KUVEventSubscriber() override;

    /// The manager through which this object sends its events, owned by the object, or null.
    virtual KUVCallbackManager* GetCallbackManager();

protected:
    KUVEventSubscriber();
};

/// A node of the host's tree of commands.
///
/// A parent knows its children but holds no reference on them; a command that dies leaves the tree,
/// and its children go on without parent.
class KUV_EXPORT KUVCommand : public KUVEventSubscriber {
    KUV_DECLARE_CLASS
public:
    /// `parent` may be null. The name is copied.
    KUVCommand(KUVCommand* parent, const KUVString& name);
    ~KUVCommand() override;
    KUVCommand(const KUVCommand&) = delete;
    KUVCommand& operator=(const KUVCommand&) = delete;

    /// The command's own manager, made on first use; null when memory runs out.
    KUVCallbackManager* GetCallbackManager() override;

    KUVCommand* GetParentCommand() const { return parent_; }
    const std::vector<KUVCommand*>& GetChildCommands() const { return children_; }
    const KUVString& GetCommandName() const { return name_; }

private:
    KUVCommand* parent_ = nullptr;
    std::vector<KUVCommand*> children_;
    KUVString name_;
    std::unique_ptr<KUVCallbackManager> callbackManager_;
};

#endif
