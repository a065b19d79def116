// How `KernelTable` is filled at load: by the destructors of one object that lives for a moment.
#pragma once

/// Runs the census when constructed, and fills slots 1 to 4 of the table when destroyed.
class KernelTableBase {
public:
    KernelTableBase();
    KernelTableBase(const KernelTableBase&) = delete;
    KernelTableBase& operator=(const KernelTableBase&) = delete;
    virtual ~KernelTableBase();
};

/// Fills slots 5 to 10 when destroyed, before the base fills its own.
class KernelTableFiller : public KernelTableBase {
public:
    ~KernelTableFiller() override;
};
