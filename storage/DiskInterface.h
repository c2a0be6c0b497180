// Health of the panel's flash storage.
#ifndef HXD_DISKINTERFACE_H
#define HXD_DISKINTERFACE_H

// Measured by a worker thread of the object's own; the calls are one caller's at a time. The order
// of the operations is fixed.
class DiskInterface {
public:
    virtual ~DiskInterface() =
        default;  // stops and joins the worker: a tick, or a measurement under way

    // Finds the storage, measures it once and starts the worker. False when there is none; may be
    // called again then, and must not once it has returned true.
    virtual bool init() = 0;
    // Remaining life in per cent; -2 when the flash does not tell.
    virtual int getDiskLifeTime() = 0;
    // IO gear: 1 = light writing ... 4 = more than the flash sustains for five years.
    virtual int getDiskIO() = 0;
    // Asks the worker for a measurement; refreshRes() turns true when it has answered.
    virtual void refresh() = 0;
    virtual bool refreshRes() = 0;
};

#endif
