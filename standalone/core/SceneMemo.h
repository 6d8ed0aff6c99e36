#ifndef core_SceneMemo_h
#define core_SceneMemo_h

namespace core {

/// Drops the remembered numbers of all bags. Bags call it whenever their children change; costs a
/// comparison when nothing is remembered.
void ForgetSceneStatistics() noexcept;

}  // namespace core

#endif
