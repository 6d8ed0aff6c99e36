#ifndef fuzz_EventScenario_h
#define fuzz_EventScenario_h

#include "FuzzSupport.h"
#include "LayoutChecks.h"

#include "core/StandaloneViewer.h"

#include "KUVEvents.h"

#include <array>
#include <cstddef>
#include <cstdint>

class VisIcicleLayout;

namespace fuzz {

/// Plays events on a layout as a host would deliver them, in an order taken from the input. A
/// listener carries on with the input in the middle of notifications: it selects, zooms, draws,
/// changes the columns, sends further events, edits the tree, destroys nodes, shows another tree
/// and releases the layout. After each step of the owner the layout is checked.
///
/// Aborts when something does not hold.
class EventScenario {
public:
    EventScenario(Kind kind, Bytes bytes);
    EventScenario(const EventScenario&) = delete;
    EventScenario& operator=(const EventScenario&) = delete;
    ~EventScenario();

    /// Until the input is used up.
    void Run();

    /// Events sent so far, those of listeners included.
    std::size_t CountEvents() const { return events_; }
    std::size_t CountNotifications() const { return notifications_; }
    /// What listeners did in answer.
    std::size_t CountReactions() const { return reactions_; }

private:
    static constexpr std::size_t NODES = 16;

    struct Area {
        KUVMathPoint2Df position;
        KUVMathPoint2Df size;
        float scale;
    };

    void MakeTrees();
    void MakeLayout();
    void Listen(const char* name, bool hasNodes);
    void Hear(const KUVNotification* notification, bool hasNodes);

    void Step();
    void Act(unsigned int action);
    void SendEvent();
    void SendMouseEvent();
    void SendKey();
    void SendOddEvent();
    unsigned int DeliverMouse(unsigned int action, int button, int modifier,
                              const KUVMathPoint2Df& at);
    void Navigate(unsigned int action);
    void Change(unsigned int action);
    void EditTree();
    void ForgetCounts();
    void ShowAnotherTree();
    void Weigh();
    void Turn();
    void UseColumns();
    void UseColumns(VisIcicleLayout& icicle);
    void Draw(const Area& area);
    void DrawUndisturbed();
    void DrawTwice(const Area& area);
    void ZoomAndBack(const Area& area);
    void PlotAnew(const Area& area);
    void Check();

    VisDataTree* TakeNode();
    VisDataTree* TakeNodeOrNull();
    Area TakeArea();
    KUVMathPoint2Df TakePoint();
    void Replace(NodeRef& node);

    LeakCheck leaks_;
    Kind kind_;
    Bytes bytes_;
    VisReference<FuzzFont> font_ = VisReference<FuzzFont>::Adopt(new FuzzFont);
    VisReference<core::StandaloneViewer> viewer_ =
        VisReference<core::StandaloneViewer>::Adopt(new core::StandaloneViewer);
    VisReference<KUV2DBagRep> bag_ = VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep());
    KUVMouseDevice mouse_;
    std::array<NodeRef, NODES> nodes_;
    VisReference<VisTreeSpaceFillingLayout> layout_;
    // The tree is as it was when the layout got it, and all nodes that it was given belong to it.
    bool tidy_ = false;
    // Values that add up without saturating, and a rectangle of moderate size.
    bool contained_ = false;
    bool muted_ = false;
    int nesting_ = 0;
    std::size_t events_ = 0;
    std::size_t notifications_ = 0;
    std::size_t reactions_ = 0;
};

}  // namespace fuzz

#endif
