// A callback object that records what the scheduler does to it, keyed by a number, so that
// tests can check deletions and hooks after the scheduler has deleted the object.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>

#include "utils/common/CallBackThread.h"
#include "utils/platform/window.h"

namespace qmtest {

struct Record {
    int executed = 0;
    int finished = 0;  // OnFinish calls
    int abandoned = 0;
    int deleted = 0;
    int finishAfterDelete = 0;
};

class Journal {
public:
    Record Get(int id) {
        std::lock_guard<std::mutex> lock(m_m);
        return m_records[id];
    }
    template <class F>
    void Update(int id, F f) {
        std::lock_guard<std::mutex> lock(m_m);
        f(m_records[id]);
    }
    std::map<int, Record> All() {
        std::lock_guard<std::mutex> lock(m_m);
        return m_records;
    }
    void Clear() {
        std::lock_guard<std::mutex> lock(m_m);
        m_records.clear();
    }

private:
    std::mutex m_m;
    std::map<int, Record> m_records;
};

Journal& TheJournal();

class Probe : public CCallBackThread {
public:
    explicit Probe(int id, int loop = -1) : m_id(id) { SetLoop(loop); }
    ~Probe() override {
        TheJournal().Update(m_id, [](Record& r) { ++r.deleted; });
    }

    std::function<void(Probe&)> body;   // runs on the worker
    std::atomic<bool> refuse{false};
    std::atomic<int> finishResult{-1};  // -1: the default OnFinish's result
    mutable std::atomic<int> ticks{0};

    bool OnLaunch() const override { return !refuse; }
    void Execute() override {
        TheJournal().Update(m_id, [](Record& r) { ++r.executed; });
        if (body) body(*this);
    }
    int OnFinish() const override {
        TheJournal().Update(m_id, [](Record& r) {
            if (r.deleted) ++r.finishAfterDelete;
            ++r.finished;
        });
        int r = CCallBackThread::OnFinish();
        return finishResult >= 0 ? finishResult.load() : r;
    }
    void OnAbandom() override {
        TheJournal().Update(m_id, [](Record& r) { ++r.abandoned; });
    }
    int OnTimer() const override {
        ++ticks;
        return CCallBackThread::OnTimer();
    }
    void SetTimeout(int ms) { m_nTimeout = ms; }
    int Uptime() const { return GetUptime(); }

    const int m_id;
};

inline bool PumpUntil(const std::function<bool()>& done, DWORD ms = 5000) {
    return qm::platform::PumpMessagesUntil(done, ms);
}

}  // namespace qmtest
