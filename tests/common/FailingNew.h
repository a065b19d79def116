// The global `new`, of which one request on demand fails.
#pragma once

/// While it lives, the calling thread's requests to the global `new` are counted, and request `refused`, counted from
/// 0, throws std::bad_alloc. One at a time on a thread; nothing made before may be deleted meanwhile.
class FailingNew {
public:
    explicit FailingNew(int refused);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    int Requests() const { return m_Requests; }
    int Live() const { return m_Live; } ///< blocks that were not deleted yet

    void Request();
    void Delete() { --m_Live; }

private:
    int m_Refused;
    int m_Requests = 0;
    int m_Live = 0;
};
