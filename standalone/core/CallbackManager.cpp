#include "KUVCommand.h"

#include <algorithm>
#include <string>
#include <utility>

namespace {

struct Listener {
    KUVSubscription id = 0;
    std::string name;
    const KUVBaseUnknown* sender = nullptr;
    KUVCallback callback;
    bool subscribed = true;
};

}  // namespace

/// What a running dispatch needs of its manager, kept alive by the dispatch.
struct KUVCallbackManager::State {
    /// In the order of subscription, so of increasing numbers. Held by pointer: a listener stays
    /// where it is while it runs, even when others subscribe.
    std::vector<std::unique_ptr<Listener>> listeners;
    KUVSubscription lastId = 0;
    int runningDispatches = 0;
    bool destroyed = false;

    /// Frees the subscriptions that ended; not while a dispatch runs, because one of them may be
    /// the listener that is being called. Takes no memory: it runs when a dispatch ends by an
    /// exception as well.
    void Sweep()
    {
        while (runningDispatches == 0) {
            const auto ended =
                std::find_if(listeners.begin(), listeners.end(),
                             [](const auto& listener) { return !listener->subscribed; });
            if (ended == listeners.end())
                return;
            // Out of the list first: what a callback captured may unsubscribe others when it dies.
            const std::unique_ptr<Listener> doomed = std::move(*ended);
            listeners.erase(ended);
        }
    }

    /// Counts the dispatches that run, also when a listener throws.
    class Dispatch {
    public:
        explicit Dispatch(State& state) : state_(state) { ++state_.runningDispatches; }
        ~Dispatch()
        {
            --state_.runningDispatches;
            state_.Sweep();
        }
        Dispatch(const Dispatch&) = delete;
        Dispatch& operator=(const Dispatch&) = delete;

    private:
        State& state_;
    };
};

KUVCallbackManager::KUVCallbackManager() : state_(std::make_shared<State>()) {}

KUVCallbackManager::~KUVCallbackManager()
{
    state_->destroyed = true;
    if (state_->runningDispatches > 0)
        return;
    // What the callbacks captured may still unsubscribe here when it dies.
    const std::vector<std::unique_ptr<Listener>> doomed = std::move(state_->listeners);
    state_->listeners.clear();
}

void KUVCallbackManager::DispatchCallbacks(const char* name, KUVNotification* notification,
                                           KUVBaseUnknown* sender)
{
    if (!name)
        return;
    const std::shared_ptr<State> state = state_;
    const State::Dispatch dispatch(*state);
    // The snapshot costs no memory: while a dispatch runs nobody is taken out of the list, and
    // whoever subscribes from now on stands behind the last number of now.
    const KUVSubscription last = state->lastId;
    for (std::size_t i = 0; i < state->listeners.size() && !state->destroyed; ++i) {
        const Listener& listener = *state->listeners[i];
        if (listener.id > last)
            break;
        if (listener.subscribed && listener.name == name &&
            (!listener.sender || listener.sender == sender))
            listener.callback(name, notification, sender);
    }
}

KUVSubscription KUVCallbackManager::Subscribe(const char* name, const KUVBaseUnknown* sender,
                                              KUVCallback callback)
{
    if (!name || !callback)
        return 0;
    auto listener = std::make_unique<Listener>();
    listener->name = name;
    listener->sender = sender;
    listener->callback = std::move(callback);
    listener->id = state_->lastId + 1;
    state_->listeners.push_back(std::move(listener));
    return ++state_->lastId;
}

void KUVCallbackManager::Unsubscribe(KUVSubscription subscription)
{
    const std::shared_ptr<State> state = state_;
    const auto found = std::lower_bound(
        state->listeners.begin(), state->listeners.end(), subscription,
        [](const auto& listener, KUVSubscription id) { return listener->id < id; });
    if (found == state->listeners.end() || (*found)->id != subscription)
        return;
    (*found)->subscribed = false;
    state->Sweep();
}
