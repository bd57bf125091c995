// The desktop clipboard on X11: one worker thread with its own xcb connection and a 1 x 1
// input-only window owns the CLIPBOARD selection for the process, answers other programs'
// requests (large data in INCR chunks) until one of them takes the selection, and fetches
// what other owners offer. Callers post jobs to the worker and wait for them with a time
// limit, so a silent owner or server never blocks the host for long.
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "utils/platform/posix/clipboard_internal.h"

namespace qm::platform::xclip {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kIncrThreshold = 256 * 1024;  // larger replies go in chunks
constexpr std::size_t kIncrChunk = 256 * 1024;
constexpr std::size_t kMaxFetch = 256u << 20;
constexpr int kReplyMs = 1000;       // an owner's answer to a request
constexpr int kChunkMs = 2000;       // each chunk of an incoming INCR transfer
constexpr int kTransferIdleMs = 5000;  // an outgoing INCR transfer whose requestor went quiet

enum AtomIndex { CLIPBOARD, TARGETS, TIMESTAMP, MULTIPLE, UTF8_STRING, TEXT, INCR, ATOM_PAIR, QM_SELECTION, kAtomCount };
const char* const kAtomNames[kAtomCount] = {"CLIPBOARD", "TARGETS", "TIMESTAMP", "MULTIPLE", "UTF8_STRING",
                                            "TEXT",      "INCR",    "ATOM_PAIR", "QM_SELECTION"};

struct OutgoingTransfer {
    xcb_window_t requestor;
    xcb_atom_t property;
    xcb_atom_t type;
    std::shared_ptr<const std::string> data;
    std::size_t offset;
    Clock::time_point last;
};

class Worker {
public:
    ~Worker() { Stop(); }

    // Connects on the worker thread; false when no connection was made within a second.
    bool Start(const std::string& display) {
        wake_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        if (wake_ < 0) return false;
        auto ready = std::make_shared<Ready>();
        thread_ = std::thread([this, display, ready] { Run(display, ready); });
        std::unique_lock<std::mutex> lock(ready->m);
        ready->cv.wait_for(lock, std::chrono::seconds(1), [&] { return ready->done; });
        if (!ready->done || !ready->ok) {
            // The thread finishes on its own once the connection fails or succeeds late.
            stopping_ = true;
            Wake();
            if (ready->done) {
                thread_.join();
            } else {
                thread_.detach();
                detached_ = true;
                wake_ = -1;  // left to the detached thread, which closes it
            }
            return false;
        }
        return true;
    }

    void Stop() {
        if (!thread_.joinable()) return;
        stopping_ = true;
        Wake();
        thread_.join();
        if (wake_ >= 0) close(wake_);
        wake_ = -1;
    }

    bool Alive() const { return alive_; }
    // The connection did not finish in time: the thread runs on with this object, which must
    // then never be destroyed.
    bool Detached() const { return detached_; }
    bool Owned() const { return owned_; }

    // Runs f on the worker; false when it did not finish within timeoutMs.
    bool Call(std::function<void()> f, int timeoutMs) {
        auto done = std::make_shared<Ready>();
        {
            std::lock_guard<std::mutex> lock(jobsLock_);
            jobs_.push_back([f = std::move(f), done] {
                f();
                std::lock_guard<std::mutex> l(done->m);
                done->done = true;
                done->cv.notify_all();
            });
        }
        Wake();
        std::unique_lock<std::mutex> lock(done->m);
        return done->cv.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] { return done->done; });
    }

    // Blocks until the selection is lost or the time passes.
    bool WaitLost(DWORD timeoutMs) {
        std::unique_lock<std::mutex> lock(ownedLock_);
        auto lost = [&] { return !owned_ || !alive_; };
        if (timeoutMs == 0) {
            ownedCv_.wait(lock, lost);
            return true;
        }
        return ownedCv_.wait_for(lock, std::chrono::milliseconds(timeoutMs), lost);
    }

    // ---- worker-thread side ----------------------------------------------------------------
    bool OwnNow(std::map<std::string, Offer> offers) {
        xcb_timestamp_t t;
        if (!ServerTime(&t)) return false;
        offers_.clear();
        for (auto& [name, offer] : offers) {
            xcb_atom_t target = Intern(name.c_str());
            xcb_atom_t type = Intern(offer.type.c_str());
            if (target != XCB_ATOM_NONE && type != XCB_ATOM_NONE)
                offers_[target] = {type, std::make_shared<const std::string>(std::move(offer.data))};
        }
        xcb_set_selection_owner(c_, window_, atoms_[CLIPBOARD], t);
        xcb_get_selection_owner_reply_t* r =
            xcb_get_selection_owner_reply(c_, xcb_get_selection_owner(c_, atoms_[CLIPBOARD]), nullptr);
        bool ok = r && r->owner == window_;
        free(r);
        ownTime_ = t;
        SetOwned(ok);
        if (!ok) offers_.clear();
        return ok;
    }

    // False when refused or not answered; *silent tells which.
    bool FetchNow(xcb_atom_t target, std::string* data, xcb_atom_t* type, bool* silent = nullptr) {
        if (silent) *silent = false;
        xcb_delete_property(c_, window_, atoms_[QM_SELECTION]);
        xcb_convert_selection(c_, window_, atoms_[CLIPBOARD], target, atoms_[QM_SELECTION], XCB_CURRENT_TIME);
        xcb_flush(c_);
        xcb_atom_t property = XCB_ATOM_NONE;
        bool answered = WaitFor(kReplyMs, [&](xcb_generic_event_t* e) {
            if ((e->response_type & 0x7F) != XCB_SELECTION_NOTIFY) return false;
            auto* n = (xcb_selection_notify_event_t*)e;
            if (n->requestor != window_ || n->selection != atoms_[CLIPBOARD]) return false;
            property = n->property;
            return true;
        });
        if (!answered && silent) *silent = true;
        if (!answered || property == XCB_ATOM_NONE) return false;
        std::string first;
        if (!TakeProperty(&first, type)) return false;
        if (*type != atoms_[INCR]) {
            *data = std::move(first);
            return true;
        }
        // INCR: the owner writes chunks as we delete them, ending with an empty one. Its
        // announced size is not trusted (some owners announce 0).
        data->clear();
        for (;;) {
            bool more = WaitFor(kChunkMs, [&](xcb_generic_event_t* e) {
                if ((e->response_type & 0x7F) != XCB_PROPERTY_NOTIFY) return false;
                auto* p = (xcb_property_notify_event_t*)e;
                return p->window == window_ && p->atom == atoms_[QM_SELECTION] && p->state == XCB_PROPERTY_NEW_VALUE;
            });
            if (!more) {
                if (silent) *silent = true;
                return false;
            }
            std::string chunk;
            if (!TakeProperty(&chunk, type)) return false;
            if (chunk.empty()) return true;
            if (data->size() + chunk.size() > kMaxFetch) return false;
            *data += chunk;
        }
    }

    xcb_atom_t Intern(const char* name) {
        auto it = interned_.find(name);
        if (it != interned_.end()) return it->second;
        xcb_intern_atom_reply_t* r =
            xcb_intern_atom_reply(c_, xcb_intern_atom(c_, 0, (uint16_t)std::strlen(name), name), nullptr);
        xcb_atom_t a = r ? r->atom : (xcb_atom_t)XCB_ATOM_NONE;
        free(r);
        if (a != XCB_ATOM_NONE) interned_[name] = a;
        return a;
    }

    std::string AtomName(xcb_atom_t atom) {
        for (auto& [name, a] : interned_)
            if (a == atom) return name;
        xcb_get_atom_name_reply_t* r = xcb_get_atom_name_reply(c_, xcb_get_atom_name(c_, atom), nullptr);
        std::string name;
        if (r) name.assign(xcb_get_atom_name_name(r), (std::size_t)xcb_get_atom_name_name_length(r));
        free(r);
        if (!name.empty()) interned_[name] = atom;
        return name;
    }

private:
    struct Ready {
        std::mutex m;
        std::condition_variable cv;
        bool done = false;
        bool ok = false;
    };
    struct Served {
        xcb_atom_t type;
        std::shared_ptr<const std::string> data;
    };

    void Wake() {
        if (wake_ < 0) return;
        std::uint64_t one = 1;
        ssize_t n = write(wake_, &one, sizeof one);
        (void)n;
    }

    void SetOwned(bool owned) {
        std::lock_guard<std::mutex> lock(ownedLock_);
        owned_ = owned;
        ownedCv_.notify_all();
    }

    void Run(std::string display, std::shared_ptr<Ready> ready) {
        int wakeFd = wake_;
        bool ok = Connect(display);
        alive_ = ok;  // before the caller learns the outcome: it checks Alive() at once
        {
            std::lock_guard<std::mutex> lock(ready->m);
            ready->done = true;
            ready->ok = ok;
            ready->cv.notify_all();
        }
        if (ok) Loop();
        alive_ = false;
        SetOwned(false);
        if (c_) xcb_disconnect(c_);
        c_ = nullptr;
        if (wake_ < 0 && wakeFd >= 0) close(wakeFd);  // detached: nobody else closes it
    }

    bool Connect(const std::string& display) {
        c_ = xcb_connect(display.c_str(), nullptr);
        if (!c_ || xcb_connection_has_error(c_)) return false;
        const xcb_setup_t* setup = xcb_get_setup(c_);
        xcb_screen_t* screen = xcb_setup_roots_iterator(setup).data;
        if (!screen) return false;
        window_ = xcb_generate_id(c_);
        uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(c_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, screen->root_visual, XCB_CW_EVENT_MASK, &mask);
        xcb_intern_atom_cookie_t cookies[kAtomCount];
        for (int i = 0; i < kAtomCount; ++i)
            cookies[i] = xcb_intern_atom(c_, 0, (uint16_t)std::strlen(kAtomNames[i]), kAtomNames[i]);
        for (int i = 0; i < kAtomCount; ++i) {
            xcb_intern_atom_reply_t* r = xcb_intern_atom_reply(c_, cookies[i], nullptr);
            atoms_[i] = r ? r->atom : (xcb_atom_t)XCB_ATOM_NONE;
            free(r);
            if (atoms_[i] == XCB_ATOM_NONE) return false;
            interned_[kAtomNames[i]] = atoms_[i];
        }
        xcb_flush(c_);
        return !xcb_connection_has_error(c_);
    }

    void Loop() {
        while (!stopping_ && !xcb_connection_has_error(c_)) {
            RunJobs();
            while (xcb_generic_event_t* e = xcb_poll_for_event(c_)) {
                Handle(e);
                free(e);
            }
            DropIdleTransfers();
            xcb_flush(c_);
            pollfd fds[2] = {{xcb_get_file_descriptor(c_), POLLIN, 0}, {wake_, POLLIN, 0}};
            poll(fds, 2, transfers_.empty() ? 1000 : 200);
            if (fds[1].revents & POLLIN) {
                std::uint64_t v;
                ssize_t n = read(wake_, &v, sizeof v);
                (void)n;
            }
        }
    }

    void RunJobs() {
        for (;;) {
            std::function<void()> job;
            {
                std::lock_guard<std::mutex> lock(jobsLock_);
                if (jobs_.empty()) return;
                job = std::move(jobs_.front());
                jobs_.pop_front();
            }
            job();
        }
    }

    // Pumps events (serving requests meanwhile) until `match` accepts one or the time passes.
    bool WaitFor(int ms, const std::function<bool(xcb_generic_event_t*)>& match) {
        const auto deadline = Clock::now() + std::chrono::milliseconds(ms);
        xcb_flush(c_);
        for (;;) {
            while (xcb_generic_event_t* e = xcb_poll_for_event(c_)) {
                bool hit = match(e);
                if (!hit) Handle(e);
                free(e);
                if (hit) return true;
            }
            if (xcb_connection_has_error(c_)) return false;
            auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) return false;
            pollfd fd{xcb_get_file_descriptor(c_), POLLIN, 0};
            poll(&fd, 1, (int)std::min<long long>(left, 100));
        }
    }

    // ICCCM wants a real server time for the ownership: a zero-length append to our own
    // window's property gives one in the PropertyNotify it causes.
    bool ServerTime(xcb_timestamp_t* t) {
        xcb_change_property(c_, XCB_PROP_MODE_APPEND, window_, atoms_[QM_SELECTION], XCB_ATOM_STRING, 8, 0, nullptr);
        return WaitFor(kReplyMs, [&](xcb_generic_event_t* e) {
            if ((e->response_type & 0x7F) != XCB_PROPERTY_NOTIFY) return false;
            auto* p = (xcb_property_notify_event_t*)e;
            if (p->window != window_ || p->atom != atoms_[QM_SELECTION]) return false;
            *t = p->time;
            return true;
        });
    }

    // Reads and deletes our QM_SELECTION property.
    bool TakeProperty(std::string* data, xcb_atom_t* type) {
        xcb_get_property_reply_t* r = xcb_get_property_reply(
            c_, xcb_get_property(c_, 1, window_, atoms_[QM_SELECTION], XCB_GET_PROPERTY_TYPE_ANY, 0, 0x1FFFFFFF),
            nullptr);
        if (!r) return false;
        *type = r->type;
        int length = xcb_get_property_value_length(r);
        data->assign((const char*)xcb_get_property_value(r), (std::size_t)std::max(length, 0));
        free(r);
        return true;
    }

    void Handle(xcb_generic_event_t* e) {
        switch (e->response_type & 0x7F) {
        case XCB_SELECTION_REQUEST: Serve((xcb_selection_request_event_t*)e); break;
        case XCB_SELECTION_CLEAR:
            if (((xcb_selection_clear_event_t*)e)->selection == atoms_[CLIPBOARD]) {
                offers_.clear();
                SetOwned(false);
            }
            break;
        case XCB_PROPERTY_NOTIFY: Continue((xcb_property_notify_event_t*)e); break;
        default: break;
        }
    }

    void Serve(xcb_selection_request_event_t* r) {
        xcb_atom_t property = r->property == XCB_ATOM_NONE ? r->target : r->property;  // old clients
        bool done = false;
        if (owned_ && r->selection == atoms_[CLIPBOARD]) {
            if (r->target == atoms_[TARGETS]) {
                std::vector<xcb_atom_t> list = {atoms_[TARGETS], atoms_[TIMESTAMP]};
                for (auto& [target, served] : offers_) list.push_back(target);
                xcb_change_property(c_, XCB_PROP_MODE_REPLACE, r->requestor, property, XCB_ATOM_ATOM, 32,
                                    (uint32_t)list.size(), list.data());
                done = true;
            } else if (r->target == atoms_[TIMESTAMP]) {
                xcb_change_property(c_, XCB_PROP_MODE_REPLACE, r->requestor, property, XCB_ATOM_INTEGER, 32, 1,
                                    &ownTime_);
                done = true;
            } else if (auto it = offers_.find(r->target); it != offers_.end()) {
                const Served& s = it->second;
                if (s.data->size() > kIncrThreshold) {
                    uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
                    xcb_change_window_attributes(c_, r->requestor, XCB_CW_EVENT_MASK, &mask);
                    uint32_t size = (uint32_t)std::min<std::size_t>(s.data->size(), 0xFFFFFFFFu);
                    xcb_change_property(c_, XCB_PROP_MODE_REPLACE, r->requestor, property, atoms_[INCR], 32, 1, &size);
                    transfers_.push_back({r->requestor, property, s.type, s.data, 0, Clock::now()});
                } else {
                    xcb_change_property(c_, XCB_PROP_MODE_REPLACE, r->requestor, property, s.type, 8,
                                        (uint32_t)s.data->size(), s.data->data());
                }
                done = true;
            }
        }
        xcb_selection_notify_event_t n{};
        n.response_type = XCB_SELECTION_NOTIFY;
        n.time = r->time;
        n.requestor = r->requestor;
        n.selection = r->selection;
        n.target = r->target;
        n.property = done ? property : (xcb_atom_t)XCB_ATOM_NONE;
        xcb_send_event(c_, 0, r->requestor, XCB_EVENT_MASK_NO_EVENT, (const char*)&n);
        xcb_flush(c_);
    }

    // The requestor deleted the property of an INCR transfer: the next chunk, or the end.
    void Continue(xcb_property_notify_event_t* p) {
        if (p->state != XCB_PROPERTY_DELETE) return;
        for (auto it = transfers_.begin(); it != transfers_.end(); ++it) {
            if (it->requestor != p->window || it->property != p->atom) continue;
            std::size_t n = std::min(kIncrChunk, it->data->size() - it->offset);
            xcb_change_property(c_, XCB_PROP_MODE_REPLACE, it->requestor, it->property, it->type, 8, (uint32_t)n,
                                it->data->data() + it->offset);
            it->offset += n;
            it->last = Clock::now();
            if (n == 0) transfers_.erase(it);  // the empty chunk ended it
            xcb_flush(c_);
            return;
        }
    }

    void DropIdleTransfers() {
        auto now = Clock::now();
        for (auto it = transfers_.begin(); it != transfers_.end();) {
            if (now - it->last > std::chrono::milliseconds(kTransferIdleMs))
                it = transfers_.erase(it);
            else
                ++it;
        }
    }

    xcb_connection_t* c_ = nullptr;
    xcb_window_t window_ = 0;
    xcb_atom_t atoms_[kAtomCount] = {};
    std::map<std::string, xcb_atom_t> interned_;
    std::map<xcb_atom_t, Served> offers_;
    std::vector<OutgoingTransfer> transfers_;
    xcb_timestamp_t ownTime_ = 0;

    std::thread thread_;
    bool detached_ = false;
    int wake_ = -1;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> alive_{false};
    std::mutex jobsLock_;
    std::deque<std::function<void()>> jobs_;
    std::mutex ownedLock_;
    std::condition_variable ownedCv_;
    bool owned_ = false;
};

struct State {
    std::mutex lock;
    bool decided = false;
    std::unique_ptr<Worker> worker;
};

State& Shared() {
    static State s;  // its destructor stops the worker when the library unloads
    return s;
}

void StartOn(State& s, const char* display) {
    if (!display || !*display) return;
    auto w = std::make_unique<Worker>();
    if (w->Start(display))
        s.worker = std::move(w);
    else if (w->Detached())
        (void)w.release();  // still used by its thread: left alive on purpose
}

Worker* Current() {
    State& s = Shared();
    std::lock_guard<std::mutex> lock(s.lock);
    if (!s.decided) {
        s.decided = true;
        StartOn(s, std::getenv("DISPLAY"));
    }
    return s.worker && s.worker->Alive() ? s.worker.get() : nullptr;
}

}  // namespace

bool Active() { return Current() != nullptr; }

void UseDisplay(const char* display) {
    State& s = Shared();
    std::lock_guard<std::mutex> lock(s.lock);
    s.worker.reset();
    s.decided = true;
    StartOn(s, display);
}

bool Owned() {
    Worker* w = Current();
    return w && w->Owned();
}

bool Own(std::map<std::string, Offer> offers) {
    Worker* w = Current();
    if (!w) return false;
    auto ok = std::make_shared<bool>(false);
    auto shared = std::make_shared<std::map<std::string, Offer>>(std::move(offers));
    w->Call([w, ok, shared] { *ok = w->OwnNow(std::move(*shared)); }, 2 * kReplyMs);
    return *ok;
}

std::vector<std::string> Targets() {
    Worker* w = Current();
    if (!w) return {};
    auto names = std::make_shared<std::vector<std::string>>();
    bool finished = w->Call(
        [w, names] {
            std::string data;
            xcb_atom_t type = XCB_ATOM_NONE;
            if (!w->FetchNow(w->Intern("TARGETS"), &data, &type) || type != XCB_ATOM_ATOM) return;
            for (std::size_t i = 0; i + 4 <= data.size() && i < 4 * 1024; i += 4) {
                xcb_atom_t a;
                std::memcpy(&a, data.data() + i, 4);
                std::string name = w->AtomName(a);
                if (!name.empty()) names->push_back(name);
            }
        },
        2 * kReplyMs + 500);
    return finished ? *names : std::vector<std::string>{};
}

FetchResult Fetch(const char* target, std::string* data, std::string* type) {
    Worker* w = Current();
    if (!w || !target) return FetchResult::Refused;
    struct Result {
        bool ok = false;
        bool silent = false;
        std::string data, type;
    };
    auto result = std::make_shared<Result>();
    std::string name = target;
    // An INCR transfer may take several chunk periods; the worker bounds each one.
    bool finished = w->Call(
        [w, result, name] {
            xcb_atom_t t = XCB_ATOM_NONE;
            result->ok = w->FetchNow(w->Intern(name.c_str()), &result->data, &t, &result->silent);
            if (result->ok) result->type = w->AtomName(t);
        },
        60 * 1000);
    if (!finished || result->silent) return FetchResult::NoAnswer;
    if (!result->ok) return FetchResult::Refused;
    *data = std::move(result->data);
    if (type) *type = result->type;
    return FetchResult::Ok;
}

bool ServeUntilReplaced(DWORD timeoutMs) {
    Worker* w = Current();
    if (!w) return true;
    return w->WaitLost(timeoutMs);
}

}  // namespace qm::platform::xclip
