#ifndef KUVExport_h
#define KUVExport_h

// Marks what the host offers to its modules. Everything else stays hidden in the host's library.
#define KUV_EXPORT __attribute__((visibility("default")))

#endif
