#ifndef VisTreeSpaceFillingLayoutNotification_h
#define VisTreeSpaceFillingLayoutNotification_h

#include "KUVCommand.h"
#include "VisExport.h"

class VisDataTree;

/// What a layout tells its listeners: the node before and the node now, either of which may be
/// null.
///
/// Made on the stack for one dispatch, during which both nodes stay alive; listeners do not keep
/// it, nor the nodes without a reference of their own.
class VIS_EXPORT VisTreeSpaceFillingLayoutNotification : public KUVNotification {
    KUV_DECLARE_CLASS
public:
    VisTreeSpaceFillingLayoutNotification(VisDataTree* previousNode, VisDataTree* node);
    ~VisTreeSpaceFillingLayoutNotification() override;

    VisDataTree* GetPreviousNode() const { return previousNode_; }
    VisDataTree* GetNode() const { return node_; }

private:
    VisDataTree* previousNode_;
    VisDataTree* node_;
};

#endif
