#include "KUVViewer.h"

KUV_IMPLEMENT_CLASS(KUVSupport, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVSceneGraph, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVViewpoint, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUV3DViewpoint, KUVViewpoint, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVViewer, KUVBaseUnknown, "KUVHost")

KUVSupport::KUVSupport() = default;
KUVSupport::~KUVSupport() = default;

KUVSceneGraph::KUVSceneGraph() = default;
KUVSceneGraph::~KUVSceneGraph() = default;

KUVViewpoint::KUVViewpoint() = default;
KUVViewpoint::~KUVViewpoint() = default;

KUV3DViewpoint* KUVViewpoint::As3DViewpoint() { return nullptr; }

KUV3DViewpoint::KUV3DViewpoint() = default;
KUV3DViewpoint::~KUV3DViewpoint() = default;

KUV3DViewpoint* KUV3DViewpoint::As3DViewpoint() { return this; }

KUVViewer::KUVViewer() = default;
KUVViewer::~KUVViewer() = default;
