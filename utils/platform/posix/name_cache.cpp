#include "utils/platform/posix/name_cache.h"

#include <dirent.h>
#include <sys/stat.h>

#include <list>
#include <mutex>
#include <unordered_map>

namespace qm::platform::names {

namespace {

struct Stamp {
    dev_t dev = 0;
    ino_t ino = 0;
    long long sec = -1;
    long nsec = 0;
    bool operator==(const Stamp& o) const { return dev == o.dev && ino == o.ino && sec == o.sec && nsec == o.nsec; }
};

bool StampOf(const std::string& dir, Stamp& out) {
    struct stat st;
    if (stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return false;
    out.dev = st.st_dev;
    out.ino = st.st_ino;
    out.sec = (long long)st.st_mtim.tv_sec;
    out.nsec = st.st_mtim.tv_nsec;
    return true;
}

std::string Folded(const std::string& name) {
    std::string key(name);
    for (char& c : key) c = (char)Fold((unsigned char)c);
    return key;
}

struct Listing {
    Stamp stamp;
    std::unordered_map<std::string, std::string> byFolded;  // the first entry of each folding
};

// A few folders at a time: the ones in use now.
constexpr size_t kFolders = 8;

struct Cache {
    std::mutex lock;
    std::list<std::pair<std::string, Listing>> folders;  // most recently used first

    Listing* Get(const std::string& dir) {
        for (auto it = folders.begin(); it != folders.end(); ++it)
            if (it->first == dir) {
                folders.splice(folders.begin(), folders, it);
                return &folders.front().second;
            }
        return nullptr;
    }

    // Reads the folder into a listing stamped with `stamp` (taken before the read, so that a
    // change during the read makes the next lookup read again).
    Listing* Read(const std::string& dir, const Stamp& stamp) {
        DIR* d = opendir(dir.c_str());
        if (!d) return nullptr;
        Listing fresh;
        fresh.stamp = stamp;
        while (dirent* e = readdir(d)) {
            std::string name = e->d_name;
            fresh.byFolded.emplace(Folded(name), name);
        }
        closedir(d);
        if (Listing* old = Get(dir)) {
            *old = std::move(fresh);
            return old;
        }
        if (folders.size() >= kFolders) folders.pop_back();
        folders.emplace_front(dir, std::move(fresh));
        return &folders.front().second;
    }
};

Cache& TheCache() {
    static Cache* c = new Cache;  // never destroyed: lookups may run while the process ends
    return *c;
}

}  // namespace

unsigned char Fold(unsigned char c) {
    if (c >= 'A' && c <= 'Z') return (unsigned char)(c + 32);
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return (unsigned char)(c + 32);
    return c;
}

bool FindNoCase(const std::string& dir, const std::string& name, std::string& match) {
    Stamp now;
    if (!StampOf(dir, now)) return false;
    Cache& c = TheCache();
    std::lock_guard<std::mutex> g(c.lock);
    Listing* l = c.Get(dir);
    if (!l || !(l->stamp == now)) l = c.Read(dir, now);
    if (!l) return false;
    auto it = l->byFolded.find(Folded(name));
    if (it == l->byFolded.end()) return false;
    match = it->second;
    return true;
}

void Made(const std::string& dir, const std::string& name) {
    Cache& c = TheCache();
    std::lock_guard<std::mutex> g(c.lock);
    Listing* l = c.Get(dir);
    if (!l) return;
    Stamp now;
    if (!StampOf(dir, now)) {
        l->stamp = Stamp();  // read again at the next lookup
        return;
    }
    l->byFolded.emplace(Folded(name), name);
    l->stamp = now;
}

void ForgetAll() {
    Cache& c = TheCache();
    std::lock_guard<std::mutex> g(c.lock);
    c.folders.clear();
}

}  // namespace qm::platform::names
