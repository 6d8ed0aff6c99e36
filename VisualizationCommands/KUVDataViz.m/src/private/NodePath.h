#ifndef NodePath_h
#define NodePath_h

#include "VisDataTree.h"

#include "KUV3D.h"

/// The pick path that a node of a tree of the scene keeps as its data, or null.
inline KUVPickPath* PickPathOf(const VisDataTree& node)
{
    return static_cast<KUVPickPath*>(node.GetData());
}

/// `path` as the data of a node.
inline void* NodeDataOf(KUVPickPath* path) { return path; }

#endif
