// Free space of the panel's storage.
#ifndef HXD_FREESPACE_H
#define HXD_FREESPACE_H

// Whole MiB that are free on the root file system, plus those of the project's data directory when
// that lies on a storage of its own; 0.0 when a file system cannot be asked.
double FreeStorageMiB();

#endif
