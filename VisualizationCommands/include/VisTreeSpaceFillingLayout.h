#ifndef VisTreeSpaceFillingLayout_h
#define VisTreeSpaceFillingLayout_h

#include "KUVCommand.h"
#include "KUVStringsMath.h"
#include "VisExport.h"

#include <memory>
#include <stack>
#include <vector>

class KUV2DBagRep;
class KUVCharacterFont;
class KUVDeviceEvent;
class KUVIMEKeybdEvent;
class KUVKeybdEvent;
class KUVViewer;
class VisDataTree;
class VisTreeSpaceFillingLayoutCache;
class VisTreeSpaceFillingView;
struct VisTreeSpaceFillingLayoutCachedTextures;

/// Base of the layouts: a command that shows one tree, zoomed into its current root, and keeps a
/// selection and a highlighted node.
///
/// It gives every node of the tree a cache and hangs the nodes' views below a bag; which rectangle
/// a node gets is up to the derived layouts. One tree belongs to one layout: a second picture of
/// the same scene uses a copy.
///
/// Rules for hosts: never `delete` a layout, `Release` it. Detach the tree (`SetTreeRoot(nullptr)`)
/// before editing or freeing it. Set weights after the layout was made, since they live in the
/// caches. The font of a `Draw` outlives the layout.
///
/// Listeners are called synchronously, in the middle of the operation. They may release the layout,
/// change root or selection, draw, and edit the tree: a node that dies leaves its place empty.
/// A listener that makes the layout notify again and again is cut off at 64 nested notifications;
/// the layout then stays silent until the outermost one has ended. Without a callback manager
/// nothing is dispatched.
///
/// `SetTreeRoot`, `SetCurrentRoot`, `ReplaceLastCurrentTreeRoots`, `FindNodeAtPosition` and the
/// drawing throw `std::bad_alloc` when memory runs out and leave the layout usable.
class VIS_EXPORT VisTreeSpaceFillingLayout : public KUVCommand {
    KUV_DECLARE_CLASS
public:
    ~VisTreeSpaceFillingLayout() override;

    // ---- events, by the names under which they are dispatched with this layout as sender

    /// Payload: the former and the new current root.
    static const char* ON_SET_CURRENT_ROOT();
    /// Payload: the former and the new selection. Sent again, with both the same, by every draw.
    static const char* ON_SELECT_NODE();
    /// Payload: the former and the new highlighted node, or null for none.
    static const char* ON_HOVER_NODE();
    /// No payload: a null notification.
    static const char* ON_RIGHT_CLICK_NODE();
    /// No payload: a null notification.
    static const char* ON_DOUBLE_CLICK();

    // ---- virtual operations

    /// Lays out and shows the current root's subtree in the rectangle with the lower left corner
    /// `position` and the extent `size` (layout units). `scale` multiplies lengths on the way to
    /// the views. This class only remembers `font`, which may be null and is not referenced, and
    /// `scale`.
    virtual void Draw(const KUVMathPoint2Df& position, const KUVMathPoint2Df& size,
                      KUVCharacterFont* font, float scale);

    /// Zooms to `node`; null stands for the tree root. Nothing happens when it is the current root.
    ///
    /// With `pushOnStack` non-zero `Unzoom` comes back. The selection moves to `node` unless it is
    /// `node` or below it. When the former root had a cache and redrawing is switched on, `node` is
    /// drawn into the rectangle of the former root. Sends `ON_SET_CURRENT_ROOT` at the end.
    virtual void SetCurrentRoot(VisDataTree* node, unsigned char pushOnStack);

    /// Shows another tree, or none: takes a reference on `root` after giving the former root's
    /// back, destroys all caches with their views and makes one for every node.
    ///
    /// Root and current root become `root`, selection and leaf selection its first leaf, nothing is
    /// highlighted. Nothing is drawn and nothing is sent, and the stack of earlier roots stays as
    /// it is: empty it too when the former tree goes away. When memory runs out there is no tree.
    virtual void SetTreeRoot(VisDataTree* root);

    /// Home unzooms, the arrow keys move the selection, the page keys go to `ApplyPageUpPageDown`.
    /// Gives 0 when the event was used, 1 when not (also for null, without current root, and when
    /// memory runs out).
    virtual unsigned int KeyboardAction(KUVKeybdEvent* event);
    /// A left press selects, a right press selects and sends `ON_RIGHT_CLICK_NODE`, motion without
    /// buttons highlights, releasing the middle button zooms in, a double click selects and sends
    /// `ON_DOUBLE_CLICK` (left) or zooms in (middle). Gives 0 when the event was used, 1 when not.
    virtual unsigned int DeviceAction(KUVNotification* event);
    /// Texts of input methods are never used: 1.
    virtual unsigned int IMEKeyboardAction(KUVIMEKeybdEvent* event);

protected:
    /// A new cache of the layout's own class, linked to no node, for the layout to own. Null when
    /// memory runs out.
    virtual VisTreeSpaceFillingLayoutCache* GenerateCache() = 0;
    /// What a click on `node` does: it becomes the selection.
    virtual void OnMouseSelection(VisDataTree* node);
    /// The node to which an arrow key leads, or null: the leaf behind or before the selected one,
    /// the nearest ancestor or the child towards the selected leaf that is not merged.
    virtual VisDataTree* GetNodeViaNavigation(unsigned int key);
    /// What the page keys do: nothing here.
    virtual void ApplyPageUpPageDown(unsigned int key);

public:
    // ---- hit test

    /// The deepest node below the current root whose rectangle holds the point (layout coordinates,
    /// bounds included), the first of several siblings; null when there is none.
    ///
    /// Discarded nodes are never hit. Their subtrees are searched only while discarded nodes are
    /// shown.
    VisDataTree* FindNodeAtPosition(float x, float y);

    // ---- roots

    const VisDataTree* GetTreeRoot() const { return treeRoot_; }
    VisDataTree* GetTreeRoot() { return treeRoot_; }
    const VisDataTree* GetCurrentRoot() const;
    VisDataTree* GetCurrentRoot();
    /// The earlier current roots, the latest on top. The entry of a node that died is null. Good
    /// until the stack changes.
    const std::stack<VisDataTree*>& GetLastCurrentTreeRoots() const;
    /// Empties the stack and gives its memory back.
    void EmptyStackOfLastTreeRoots();
    /// Replaces the stack by a copy of `roots`, whose nodes are alive (or null).
    void ReplaceLastCurrentTreeRoots(const std::stack<VisDataTree*>& roots);
    /// Goes back to the latest earlier root that is still alive and gives 1, or 0 when there is
    /// none.
    unsigned char Unzoom();

    // ---- selection and highlight

    const VisDataTree* GetCurrentSelection() const;
    VisDataTree* GetCurrentSelection();
    /// The selected leaf; kept while one of its ancestors is the selection.
    const VisDataTree* GetCurrentLeafSelection() const;
    VisDataTree* GetCurrentLeafSelection();
    /// Selects `node`, which is not null (null does nothing), and ends the highlight of any other
    /// node. Sends `ON_HOVER_NODE` if a highlight ended, then `ON_SELECT_NODE`.
    void SetCurrentSelection(VisDataTree* node);
    /// Highlights `node`, a node of the shown tree (it has a cache), and sends `ON_HOVER_NODE`.
    /// Null ends the highlight silently. Nothing happens when `node` is the highlighted one.
    void SetCurrentHighlightedNode(VisDataTree* node);

    // ---- switches

    /// Whether the user may zoom. Default 1.
    unsigned char GetEnableZoom() const { return enableZoom_; }
    void SetEnableZoom(unsigned char enable) { enableZoom_ = enable; }
    /// Whether the page keys are used. Default 1.
    unsigned char IsPageUpPageDownEnabled() const { return pageUpPageDownEnabled_; }
    void SetEnablePageUpPageDown(unsigned char enable) { pageUpPageDownEnabled_ = enable; }
    /// Whether `SetCurrentRoot` draws at once. Default 1.
    unsigned char GetRedrawOnSetCurrentRoot() const { return redrawOnSetCurrentRoot_; }
    void SetRedrawOnSetCurrentRoot(unsigned char redraw) { redrawOnSetCurrentRoot_ = redraw; }
    /// Added to device positions, in device units. Default (0, 0).
    const KUVMathPoint2Df& GetDeviceActionOffset() const { return deviceActionOffset_; }
    void SetDeviceActionOffset(const KUVMathPoint2Df& offset) { deviceActionOffset_ = offset; }

    /// The images shared by the layout's views, or null before `Init`. Owned by the layout.
    VisTreeSpaceFillingLayoutCachedTextures* GetCachedTextures() const
    {
        return cachedTextures_.get();
    }

protected:
    /// `parent` may be null.
    explicit VisTreeSpaceFillingLayout(KUVCommand* parent);
    /// Called once by the factories of the derived layouts. Takes references on `root` and on
    /// `bagRep`, which may be null. With a null `root` nothing happens at all.
    void Init(VisDataTree* root, KUV2DBagRep* bagRep);

    /// Whether discarded nodes are shown. Default 0.
    unsigned char GetDiscardedVisibility() const { return discardedVisibility_; }
    void SetDiscardedVisibility(unsigned char visible) { discardedVisibility_ = visible; }

    /// Whether a leaf that becomes the selection becomes the leaf selection too. Default 1.
    void SetLeafSelectionTracking(unsigned char tracking) { leafSelectionTracking_ = tracking; }

    /// Turns a position in device units (y downwards in a viewer, which may be null) into layout
    /// coordinates, in place, and gives the node there or null.
    VisDataTree* FromEventToNode(float& x, float& y, KUVViewer* viewer);

    /// Sends `notification`, which may be null, to the listeners of `name`, unless notifications
    /// are nested too deep. A listener may release the layout: the caller holds a reference.
    void Dispatch(const char* name, KUVNotification* notification);

    KUV2DBagRep* GetBagRep() const { return bagRep_; }
    /// The font and the scale of the last `Draw`.
    KUVCharacterFont* GetFont() const { return font_; }
    float GetDrawScale() const { return drawScale_; }

    /// The view of `cache`, made now if it has none: with the layout's textures, its bag under the
    /// layout's bag. Null without cache or when memory runs out.
    VisTreeSpaceFillingView* CreateView(VisTreeSpaceFillingLayoutCache* cache);
    /// Takes the bag of the cache's view out of the layout's bag and destroys the view.
    void DeleteView(VisTreeSpaceFillingLayoutCache* cache);
    /// Hides the node and all below it: no views, not expanded, discarded. What is hidden already
    /// as a whole is not walked again.
    void ResetView(VisTreeSpaceFillingLayoutCache* cache);
    /// The same for a node and its cache, also where the cache has forgotten the node. Null and a
    /// node without a layout's cache are ignored.
    void ResetViewOf(VisDataTree* node);
    /// The same for all below `top`, without the node itself; `cache` is its cache.
    void ResetViewsBelow(VisDataTree& top, VisTreeSpaceFillingLayoutCache& cache);

private:
    struct Slots;
    class DispatchLevel;

    void ReleaseTree() noexcept;
    void UnlinkCaches() noexcept;
    void LinkCaches();
    void HideNode(VisTreeSpaceFillingLayoutCache& cache);
    void UpdateViewsOfSelection(VisDataTree* node);
    void Dispatch(const char* name, VisDataTree* previousNode, VisDataTree* node);
    unsigned int UseDeviceEvent(const KUVDeviceEvent& event, KUVViewer* viewer);
    unsigned int UsePress(const KUVDeviceEvent& event, int buttons, VisDataTree* hit);
    unsigned int UseMotion(int buttons, VisDataTree* hit);
    unsigned int UseRelease(const KUVDeviceEvent& event, int buttons, KUVViewer* viewer);
    unsigned int UseDoubleClick(const KUVDeviceEvent& event, VisDataTree* hit);
    unsigned int UseKey(const KUVKeybdEvent& event);
    VisDataTree* FindLeafBeside(bool forward);
    VisDataTree* FindShownParent();
    VisDataTree* FindShownChild();

    std::vector<VisTreeSpaceFillingLayoutCache*> caches_;
    VisDataTree* treeRoot_ = nullptr;
    // Current root, leaf selection, selection, highlighted node and earlier roots: pointers without
    // reference that become null when their node dies.
    std::unique_ptr<Slots> slots_;
    KUV2DBagRep* bagRep_ = nullptr;
    unsigned char enableZoom_ = 1;
    unsigned char discardedVisibility_ = 0;
    unsigned char leafSelectionTracking_ = 1;
    unsigned char pageUpPageDownEnabled_ = 1;
    std::unique_ptr<VisTreeSpaceFillingLayoutCachedTextures> cachedTextures_;
    KUVCharacterFont* font_ = nullptr;
    float drawScale_ = 1.0F;
    unsigned char redrawOnSetCurrentRoot_ = 1;
    KUVMathPoint2Df deviceActionOffset_;
    unsigned int dispatchDepth_ = 0;
    bool silenced_ = false;
};

#endif
