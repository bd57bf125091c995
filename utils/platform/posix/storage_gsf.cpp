// Compound files on POSIX: an element tree in memory, read from and written to the compound
// file format with libgsf (GsfInfileMSOle / GsfOutfileMSOle).
#include "utils/platform/storage.h"

#include <gsf/gsf.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>

#include "utils/platform/codepage.h"
#include "utils/platform/debugout.h"
#include "utils/platform/posix/files_internal.h"
#include "utils/platform/posix/com_object.h"

namespace qm::platform {

namespace {

constexpr std::size_t kMaxNameUnits = 31;
constexpr DWORD kAccessMask = 3;

char16_t UpperUnit(char16_t c) {
    if (c >= u'a' && c <= u'z') return (char16_t)(c - 32);
    if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return (char16_t)(c - 32);
    if (c == 0xFF) return 0x178;
    return c;
}

// Elements are ordered as the format's directory orders them: shorter names first, then by
// the upper-case units.
int CompareNames(const std::u16string& a, const std::u16string& b) {
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    for (std::size_t i = 0; i < a.size(); ++i) {
        char16_t x = UpperUnit(a[i]), y = UpperUnit(b[i]);
        if (x != y) return x < y ? -1 : 1;
    }
    return 0;
}

// OLECHAR (wchar_t, 4 bytes here) names as UTF-16 units; false for a name that cannot be an
// element's.
bool NameOf(const OLECHAR* name, std::u16string& out) {
    out.clear();
    if (!name) return false;
    for (const OLECHAR* p = name; *p; ++p) {
        auto c = (std::uint32_t)*p;
        if (c > 0x10FFFF) return false;
        if (c > 0xFFFF) {
            c -= 0x10000;
            out.push_back((char16_t)(0xD800 + (c >> 10)));
            out.push_back((char16_t)(0xDC00 + (c & 0x3FF)));
        } else {
            out.push_back((char16_t)c);
        }
        if (out.size() > kMaxNameUnits) return false;
    }
    if (out.empty()) return false;
    for (char16_t c : out)
        if (c == u'\\' || c == u'/' || c == u':' || c == u'!') return false;
    return true;
}

LPOLESTR TaskName(const std::u16string& name) {
    auto* p = (LPOLESTR)TaskMemAlloc((name.size() + 1) * sizeof(OLECHAR));
    if (!p) return nullptr;
    for (std::size_t i = 0; i < name.size(); ++i) p[i] = (OLECHAR)name[i];
    p[name.size()] = 0;
    return p;
}

struct Node {
    std::u16string name;
    bool storage = false;
    CLSID clsid{};
    std::vector<BYTE> data;
    std::vector<std::unique_ptr<Node>> children;
    int opened = 0;

    // The children are kept in directory order (Insert), so a name is found by halving.
    Node* Find(const std::u16string& n) const {
        auto at = std::lower_bound(children.begin(), children.end(), n,
                                   [](const std::unique_ptr<Node>& c, const std::u16string& key) {
                                       return CompareNames(c->name, key) < 0;
                                   });
        return at != children.end() && CompareNames((*at)->name, n) == 0 ? at->get() : nullptr;
    }
    Node* Insert(std::unique_ptr<Node> node) {
        auto at = std::lower_bound(children.begin(), children.end(), node,
                                   [](const std::unique_ptr<Node>& a, const std::unique_ptr<Node>& b) {
                                       return CompareNames(a->name, b->name) < 0;
                                   });
        return children.insert(at, std::move(node))->get();
    }
    void Remove(Node* node) {
        for (auto it = children.begin(); it != children.end(); ++it)
            if (it->get() == node) {
                children.erase(it);
                return;
            }
    }
    bool AnyOpen() const {
        if (opened) return true;
        for (auto& c : children)
            if (c->AnyOpen()) return true;
        return false;
    }
};

// Silences libgsf's and GLib's complaints about damaged files: they reach the trace instead.
void QuietLog(const gchar* domain, GLogLevelFlags, const gchar* message, gpointer) {
    std::string line = std::string("\ncompound file: ") + (domain ? domain : "") + ": " + (message ? message : "");
    WriteDebugOutput(line.c_str());
}

void InitGsf() {
    static std::once_flag once;
    std::call_once(once, [] {
        for (const char* domain : {"libgsf:msole", "libgsf", "GLib-GObject", "GLib"})
            g_log_set_handler(domain, (GLogLevelFlags)(G_LOG_LEVEL_MASK & ~G_LOG_LEVEL_ERROR), QuietLog, nullptr);
    });
}

// One compound file (or memory storage): the tree and where it is saved.
struct Document {
    std::unique_ptr<Node> root = std::make_unique<Node>();
    std::string native;       // empty: in memory
    bool writable = true;
    bool dirty = false;
    std::vector<BYTE> memory;  // the bytes of a memory storage after its last save
    std::recursive_mutex lock;

    ~Document() {
        if (dirty && writable && !native.empty()) {
            HRESULT hr = Save();
            if (FAILED(hr)) WriteDebugOutput("\ncompound file: could not be written at its last release");
        }
    }

    HRESULT Save();
};

HRESULT WriteChildren(GsfOutfile* out, const Node& node) {
    for (auto& c : node.children) {
        std::string name = Utf16ToUtf8(c->name.data(), c->name.size());
        GsfOutput* child = gsf_outfile_new_child(out, name.c_str(), c->storage ? TRUE : FALSE);
        if (!child) return STG_E_WRITEFAULT;
        HRESULT hr = S_OK;
        if (c->storage) {
            gsf_outfile_msole_set_class_id(GSF_OUTFILE_MSOLE(child), (const guint8*)&c->clsid);
            hr = WriteChildren(GSF_OUTFILE(child), *c);
        } else {
            const BYTE* p = c->data.data();
            std::size_t left = c->data.size();
            while (left && SUCCEEDED(hr)) {
                std::size_t n = std::min<std::size_t>(left, 1 << 20);
                if (!gsf_output_write(child, n, p)) hr = STG_E_WRITEFAULT;
                p += n;
                left -= n;
            }
        }
        if (!gsf_output_close(child) && SUCCEEDED(hr)) hr = STG_E_WRITEFAULT;
        g_object_unref(child);
        if (FAILED(hr)) return hr;
    }
    return S_OK;
}

// Writes the tree as a compound file onto sink (which it closes).
HRESULT WriteTree(GsfOutput* sink, const Node& root) {
    GsfOutfile* out = gsf_outfile_msole_new(sink);
    if (!out) return STG_E_WRITEFAULT;
    gsf_outfile_msole_set_class_id(GSF_OUTFILE_MSOLE(out), (const guint8*)&root.clsid);
    HRESULT hr = WriteChildren(out, root);
    if (!gsf_output_close(GSF_OUTPUT(out)) && SUCCEEDED(hr)) hr = STG_E_WRITEFAULT;
    g_object_unref(out);
    return hr;
}

HRESULT Document::Save() {
    InitGsf();
    if (native.empty()) {
        GsfOutput* sink = gsf_output_memory_new();
        HRESULT hr = WriteTree(sink, *root);
        if (!gsf_output_is_closed(sink) && !gsf_output_close(sink) && SUCCEEDED(hr)) hr = STG_E_WRITEFAULT;
        if (SUCCEEDED(hr)) {
            const guint8* bytes = gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(sink));
            auto size = (std::size_t)gsf_output_size(sink);
            memory.assign(bytes, bytes + size);
            dirty = false;
        }
        g_object_unref(sink);
        return hr;
    }
    GError* error = nullptr;
    // The stdio sink writes a temporary file beside the target and renames it at close, so a
    // failed save leaves the old file whole.
    GsfOutput* sink = gsf_output_stdio_new(native.c_str(), &error);
    if (!sink) {
        if (error) g_error_free(error);
        return STG_E_ACCESSDENIED;
    }
    HRESULT hr = WriteTree(sink, *root);
    if (!gsf_output_is_closed(sink) && !gsf_output_close(sink) && SUCCEEDED(hr)) hr = STG_E_WRITEFAULT;
    g_object_unref(sink);
    if (SUCCEEDED(hr)) dirty = false;
    return hr;
}

// Reads the children of a libgsf directory into node. limit: the bytes of the whole file,
// which no stream can exceed.
HRESULT ReadChildren(GsfInfile* in, Node& node, gsf_off_t limit, int depth) {
    if (depth > 64) return STG_E_DOCFILECORRUPT;
    int n = gsf_infile_num_children(in);
    for (int i = 0; i < n; ++i) {
        GsfInput* child = gsf_infile_child_by_index(in, i);
        if (!child) return STG_E_DOCFILECORRUPT;
        auto element = std::make_unique<Node>();
        const char* name = gsf_input_name(child);
        element->name = name ? Utf8ToUtf16(name, std::strlen(name)) : std::u16string();
        HRESULT hr = S_OK;
        if (element->name.empty() || element->name.size() > kMaxNameUnits || node.Find(element->name)) {
            hr = STG_E_DOCFILECORRUPT;
        } else if (GSF_IS_INFILE(child) && gsf_infile_num_children(GSF_INFILE(child)) >= 0) {
            element->storage = true;
            gsf_infile_msole_get_class_id(GSF_INFILE_MSOLE(child), (guint8*)&element->clsid);
            hr = ReadChildren(GSF_INFILE(child), *element, limit, depth + 1);
        } else {
            gsf_off_t size = gsf_input_size(child);
            if (size < 0 || size > limit) {
                hr = STG_E_DOCFILECORRUPT;
            } else {
                element->data.resize((std::size_t)size);
                std::size_t done = 0;
                while (done < element->data.size()) {
                    std::size_t chunk = std::min<std::size_t>(element->data.size() - done, 1 << 20);
                    if (!gsf_input_read(child, chunk, element->data.data() + done)) {
                        hr = STG_E_READFAULT;
                        break;
                    }
                    done += chunk;
                }
            }
        }
        g_object_unref(child);
        if (FAILED(hr)) return hr;
        node.Insert(std::move(element));
    }
    return S_OK;
}

HRESULT ReadTree(GsfInput* input, Node& root) {
    InitGsf();
    GError* error = nullptr;
    gsf_off_t size = gsf_input_size(input);
    // Not even a header: not a compound file.
    if (size < 512) return STG_E_FILEALREADYEXISTS;
    static const BYTE kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
    BYTE head[8];
    if (!gsf_input_read(input, 8, head) || std::memcmp(head, kSignature, 8) != 0) return STG_E_FILEALREADYEXISTS;
    gsf_input_seek(input, 0, G_SEEK_SET);
    GsfInfile* in = gsf_infile_msole_new(input, &error);
    if (!in) {
        if (error) g_error_free(error);
        return STG_E_DOCFILECORRUPT;
    }
    root.storage = true;
    gsf_infile_msole_get_class_id(GSF_INFILE_MSOLE(in), (guint8*)&root.clsid);
    HRESULT hr = ReadChildren(in, root, size, 0);
    g_object_unref(in);
    return hr;
}

class StorageObject;

class StreamObject final : public posixcom::Object<StreamObject, IStream> {
public:
    StreamObject(std::shared_ptr<Document> doc, Node* node, DWORD mode) : m_doc(std::move(doc)), m_node(node), m_mode(mode) {
        ++m_node->opened;
    }
    ~StreamObject() {
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        --m_node->opened;
    }
    HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) override {
        if (!pv && cb) return STG_E_INVALIDPOINTER;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        auto& d = m_node->data;
        std::size_t n = m_pos < d.size() ? d.size() - (std::size_t)m_pos : 0;
        if (n > cb) n = cb;
        if (n) std::memcpy(pv, d.data() + m_pos, n);
        m_pos += n;
        if (pcbRead) *pcbRead = (ULONG)n;
        return S_OK;
    }
    HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) override {
        if (pcbWritten) *pcbWritten = 0;
        if (!pv && cb) return STG_E_INVALIDPOINTER;
        if ((m_mode & kAccessMask) == STGM_READ) return STG_E_ACCESSDENIED;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        auto& d = m_node->data;
        if (m_pos + cb > 0xFFFFFFFFull) return STG_E_MEDIUMFULL;
        try {
            if (d.size() < m_pos + cb) d.resize((std::size_t)(m_pos + cb));
        } catch (const std::bad_alloc&) {
            return STG_E_MEDIUMFULL;
        }
        if (cb) std::memcpy(d.data() + m_pos, pv, cb);
        m_pos += cb;
        m_doc->dirty = true;
        if (pcbWritten) *pcbWritten = cb;
        return S_OK;
    }
    HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPos) override {
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        LONGLONG base = origin == STREAM_SEEK_SET ? 0
                        : origin == STREAM_SEEK_CUR ? (LONGLONG)m_pos
                        : origin == STREAM_SEEK_END ? (LONGLONG)m_node->data.size()
                                                    : -1;
        if (base < 0) return STG_E_INVALIDFUNCTION;
        LONGLONG to = base + move.QuadPart;
        if (to < 0) return STG_E_INVALIDFUNCTION;
        m_pos = (ULONGLONG)to;
        if (newPos) newPos->QuadPart = m_pos;
        return S_OK;
    }
    HRESULT SetSize(ULARGE_INTEGER size) override {
        if ((m_mode & kAccessMask) == STGM_READ) return STG_E_ACCESSDENIED;
        if (size.QuadPart > 0xFFFFFFFFull) return STG_E_MEDIUMFULL;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        try {
            m_node->data.resize((std::size_t)size.QuadPart);
        } catch (const std::bad_alloc&) {
            return STG_E_MEDIUMFULL;
        }
        m_doc->dirty = true;
        return S_OK;
    }
    HRESULT CopyTo(IStream* to, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead, ULARGE_INTEGER* pcbWritten) override {
        return posixcom::CopyStreamBytes(this, to, cb, pcbRead, pcbWritten);
    }
    HRESULT Commit(DWORD) override { return S_OK; }
    HRESULT Revert() override { return S_OK; }
    HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }
    HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }
    HRESULT Stat(STATSTG* st, DWORD flag) override {
        if (!st) return STG_E_INVALIDPOINTER;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        std::memset(st, 0, sizeof *st);
        st->type = STGTY_STREAM;
        st->cbSize.QuadPart = m_node->data.size();
        st->grfMode = m_mode;
        if (!(flag & STATFLAG_NONAME)) st->pwcsName = TaskName(m_node->name);
        return S_OK;
    }
    // Another stream object on the same bytes, with its own seek pointer starting where this
    // one stands.
    HRESULT Clone(IStream** out) override {
        if (!out) return STG_E_INVALIDPOINTER;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        auto* copy = new StreamObject(m_doc, m_node, m_mode);
        copy->m_pos = m_pos;
        *out = copy;
        return S_OK;
    }

private:
    std::shared_ptr<Document> m_doc;
    Node* m_node;
    DWORD m_mode;
    ULONGLONG m_pos = 0;
};

// Each element handed out carries a task-memory copy of its name, which the caller frees.
struct ElementCopies {
    static constexpr HRESULT kNoPointer = STG_E_INVALIDPOINTER;
    static STATSTG Copy(const STATSTG& s) {
        STATSTG copy = s;
        copy.pwcsName = nullptr;
        if (s.pwcsName) copy.pwcsName = TaskStringCopy(s.pwcsName);
        return copy;
    }
    static void Free(STATSTG& s) { TaskMemFree(s.pwcsName); }
};
using ElementEnum = posixcom::ListEnum<IEnumSTATSTG, STATSTG, ElementCopies>;

HRESULT CopyStorage(IStorage* from, IStorage* to);

class StorageObject final : public posixcom::Object<StorageObject, IStorage> {
public:
    StorageObject(std::shared_ptr<Document> doc, Node* node, DWORD mode) : m_doc(std::move(doc)), m_node(node), m_mode(mode) {
        ++m_node->opened;
    }
    ~StorageObject() {
        std::shared_ptr<Document> doc = m_doc;
        std::lock_guard<std::recursive_mutex> g(doc->lock);
        --m_node->opened;
        m_doc.reset();
    }
    Document& Doc() { return *m_doc; }


    HRESULT CreateStream(const OLECHAR* name, DWORD mode, DWORD, DWORD, IStream** out) override {
        if (!out) return STG_E_INVALIDPOINTER;
        *out = nullptr;
        Node* node = nullptr;
        HRESULT hr = CreateElement(name, mode, false, &node);
        if (FAILED(hr)) return hr;
        *out = new StreamObject(m_doc, node, mode);
        return S_OK;
    }
    HRESULT OpenStream(const OLECHAR* name, void*, DWORD mode, DWORD, IStream** out) override {
        if (!out) return STG_E_INVALIDPOINTER;
        *out = nullptr;
        Node* node = nullptr;
        HRESULT hr = OpenElement(name, mode, false, &node);
        if (FAILED(hr)) return hr;
        *out = new StreamObject(m_doc, node, mode);
        return S_OK;
    }
    HRESULT CreateStorage(const OLECHAR* name, DWORD mode, DWORD, DWORD, IStorage** out) override {
        if (!out) return STG_E_INVALIDPOINTER;
        *out = nullptr;
        Node* node = nullptr;
        HRESULT hr = CreateElement(name, mode, true, &node);
        if (FAILED(hr)) return hr;
        *out = new StorageObject(m_doc, node, mode);
        return S_OK;
    }
    HRESULT OpenStorage(const OLECHAR* name, IStorage*, DWORD mode, SNB, DWORD, IStorage** out) override {
        if (!out) return STG_E_INVALIDPOINTER;
        *out = nullptr;
        Node* node = nullptr;
        HRESULT hr = OpenElement(name, mode, true, &node);
        if (FAILED(hr)) return hr;
        *out = new StorageObject(m_doc, node, mode);
        return S_OK;
    }
    HRESULT CopyTo(DWORD, const IID*, SNB, IStorage* to) override {
        if (!to) return STG_E_INVALIDPOINTER;
        if (to == this) return STG_E_ACCESSDENIED;
        return CopyStorage(this, to);
    }
    HRESULT MoveElementTo(const OLECHAR* name, IStorage* to, const OLECHAR* newName, DWORD flags) override {
        if (!to || !newName) return STG_E_INVALIDPOINTER;
        std::u16string n;
        if (!NameOf(name, n)) return STG_E_INVALIDNAME;
        Node* node;
        {
            std::lock_guard<std::recursive_mutex> g(m_doc->lock);
            node = m_node->Find(n);
            if (!node) return STG_E_FILENOTFOUND;
        }
        HRESULT hr;
        if (node->storage) {
            IStorage *src = nullptr, *dst = nullptr;
            hr = OpenStorage(name, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0, &src);
            if (SUCCEEDED(hr)) hr = to->CreateStorage(newName, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, 0, &dst);
            if (SUCCEEDED(hr)) hr = CopyStorage(src, dst);
            if (src) src->Release();
            if (dst) dst->Release();
        } else {
            IStream *src = nullptr, *dst = nullptr;
            hr = OpenStream(name, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &src);
            if (SUCCEEDED(hr)) hr = to->CreateStream(newName, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, 0, &dst);
            if (SUCCEEDED(hr)) hr = src->CopyTo(dst, ULARGE_INTEGER{{0xFFFFFFFFu, 0xFFFFFFFFu}}, nullptr, nullptr);
            if (src) src->Release();
            if (dst) dst->Release();
        }
        if (SUCCEEDED(hr) && flags == STGMOVE_MOVE) hr = DestroyElement(name);
        return hr;
    }
    HRESULT Commit(DWORD) override {
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        if (m_node != m_doc->root.get() || !m_doc->writable) return S_OK;
        return m_doc->Save();
    }
    HRESULT Revert() override { return S_OK; }
    HRESULT EnumElements(DWORD, void*, DWORD, IEnumSTATSTG** out) override {
        if (!out) return STG_E_INVALIDPOINTER;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        std::vector<STATSTG> items;
        for (auto& c : m_node->children) {
            STATSTG st{};
            st.pwcsName = TaskName(c->name);
            st.type = c->storage ? STGTY_STORAGE : STGTY_STREAM;
            st.cbSize.QuadPart = c->storage ? 0 : c->data.size();
            st.clsid = c->clsid;
            items.push_back(st);
        }
        *out = new ElementEnum(std::move(items));
        return S_OK;
    }
    HRESULT DestroyElement(const OLECHAR* name) override {
        std::u16string n;
        if (!NameOf(name, n)) return STG_E_INVALIDNAME;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        if (!Writable()) return STG_E_ACCESSDENIED;
        Node* node = m_node->Find(n);
        if (!node) return STG_E_FILENOTFOUND;
        if (node->AnyOpen()) return STG_E_ACCESSDENIED;
        m_node->Remove(node);
        m_doc->dirty = true;
        return S_OK;
    }
    HRESULT RenameElement(const OLECHAR* oldName, const OLECHAR* newName) override {
        std::u16string from, to;
        if (!NameOf(oldName, from) || !NameOf(newName, to)) return STG_E_INVALIDNAME;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        if (!Writable()) return STG_E_ACCESSDENIED;
        Node* node = m_node->Find(from);
        if (!node) return STG_E_FILENOTFOUND;
        Node* there = m_node->Find(to);
        if (there && there != node) return STG_E_FILEALREADYEXISTS;
        if (node->AnyOpen()) return STG_E_ACCESSDENIED;
        for (auto& c : m_node->children)
            if (c.get() == node) {
                std::unique_ptr<Node> moved = std::move(c);
                m_node->Remove(nullptr);
                moved->name = to;
                m_node->Insert(std::move(moved));
                break;
            }
        m_doc->dirty = true;
        return S_OK;
    }
    HRESULT SetElementTimes(const OLECHAR*, const FILETIME*, const FILETIME*, const FILETIME*) override {
        return S_OK;  // the format's times are not kept
    }
    HRESULT SetClass(REFCLSID clsid) override {
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        if (!Writable()) return STG_E_ACCESSDENIED;
        m_node->clsid = clsid;
        m_doc->dirty = true;
        return S_OK;
    }
    HRESULT SetStateBits(DWORD, DWORD) override { return S_OK; }
    HRESULT Stat(STATSTG* st, DWORD flag) override {
        if (!st) return STG_E_INVALIDPOINTER;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        std::memset(st, 0, sizeof *st);
        st->type = STGTY_STORAGE;
        st->clsid = m_node->clsid;
        st->grfMode = m_mode;
        if (!(flag & STATFLAG_NONAME)) {
            std::u16string name = m_node == m_doc->root.get() ? Utf8ToUtf16(m_doc->native.data(), m_doc->native.size())
                                                              : m_node->name;
            st->pwcsName = TaskName(name);
        }
        return S_OK;
    }

private:
    bool Writable() const { return m_doc->writable && (m_mode & kAccessMask) != STGM_READ; }

    HRESULT CreateElement(const OLECHAR* name, DWORD mode, bool storage, Node** out) {
        std::u16string n;
        if (!NameOf(name, n)) return name ? STG_E_INVALIDNAME : STG_E_INVALIDPOINTER;
        if ((mode & kAccessMask) == kAccessMask) return STG_E_INVALIDFLAG;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        if (!Writable()) return STG_E_ACCESSDENIED;
        if (Node* there = m_node->Find(n)) {
            if (!(mode & STGM_CREATE)) return STG_E_FILEALREADYEXISTS;
            if (there->AnyOpen()) return STG_E_ACCESSDENIED;
            m_node->Remove(there);
        }
        auto node = std::make_unique<Node>();
        node->name = n;
        node->storage = storage;
        *out = m_node->Insert(std::move(node));
        m_doc->dirty = true;
        return S_OK;
    }
    HRESULT OpenElement(const OLECHAR* name, DWORD mode, bool storage, Node** out) {
        std::u16string n;
        if (!NameOf(name, n)) return name ? STG_E_INVALIDNAME : STG_E_INVALIDPOINTER;
        if ((mode & kAccessMask) == kAccessMask) return STG_E_INVALIDFLAG;
        if (mode & STGM_CREATE) return STG_E_INVALIDFLAG;
        std::lock_guard<std::recursive_mutex> g(m_doc->lock);
        Node* node = m_node->Find(n);
        if (!node || node->storage != storage) return STG_E_FILENOTFOUND;
        if ((mode & kAccessMask) != STGM_READ && !Writable()) return STG_E_ACCESSDENIED;
        if (node->opened) return STG_E_ACCESSDENIED;
        *out = node;
        return S_OK;
    }

    std::shared_ptr<Document> m_doc;
    Node* m_node;
    DWORD m_mode;
};

// Copies every element of one storage into another through their interfaces (either may be
// any IStorage), and the class id.
HRESULT CopyStorage(IStorage* from, IStorage* to) {
    STATSTG self{};
    HRESULT hr = from->Stat(&self, STATFLAG_NONAME);
    if (FAILED(hr)) return hr;
    hr = to->SetClass(self.clsid);
    if (FAILED(hr)) return hr;
    IEnumSTATSTG* items = nullptr;
    hr = from->EnumElements(0, nullptr, 0, &items);
    if (FAILED(hr)) return hr;
    STATSTG st;
    ULONG got = 0;
    while (SUCCEEDED(hr) && items->Next(1, &st, &got) == S_OK && got == 1) {
        const DWORD create = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
        if (st.type == STGTY_STORAGE) {
            IStorage *src = nullptr, *dst = nullptr;
            hr = from->OpenStorage(st.pwcsName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0, &src);
            if (SUCCEEDED(hr)) hr = to->CreateStorage(st.pwcsName, create, 0, 0, &dst);
            if (SUCCEEDED(hr)) hr = CopyStorage(src, dst);
            if (src) src->Release();
            if (dst) dst->Release();
        } else if (st.type == STGTY_STREAM) {
            IStream *src = nullptr, *dst = nullptr;
            hr = from->OpenStream(st.pwcsName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &src);
            if (SUCCEEDED(hr)) hr = to->CreateStream(st.pwcsName, create, 0, 0, &dst);
            if (SUCCEEDED(hr)) hr = src->CopyTo(dst, st.cbSize, nullptr, nullptr);
            if (src) src->Release();
            if (dst) dst->Release();
        }
        TaskMemFree(st.pwcsName);
    }
    items->Release();
    return hr;
}

HRESULT Open(GsfInput* input, std::shared_ptr<Document>& doc) {
    HRESULT hr = ReadTree(input, *doc->root);
    if (FAILED(hr)) doc->root = std::make_unique<Node>();
    return hr;
}

// The error for a path that cannot be opened: the file or its folder missing, or no access.
HRESULT OpenError(const std::string& native) {
    struct stat st;
    if (::stat(native.c_str(), &st) == 0) return S_ISDIR(st.st_mode) ? STG_E_ACCESSDENIED : STG_E_ACCESSDENIED;
    std::string parent = posixfs::ParentOf(native);
    return posixfs::IsDir(parent) ? STG_E_FILENOTFOUND : STG_E_PATHNOTFOUND;
}

}  // namespace

HRESULT StorageCreateOnFile(const char* path, IStorage** storage) {
    if (!storage) return STG_E_INVALIDPOINTER;
    *storage = nullptr;
    std::string native;
    if (!path || !*path || !posixfs::Native(path, native)) return STG_E_INVALIDNAME;
    if (!posixfs::IsDir(posixfs::ParentOf(native))) return STG_E_PATHNOTFOUND;
    if (posixfs::IsDir(native)) return STG_E_ACCESSDENIED;
    auto doc = std::make_shared<Document>();
    doc->native = native;
    doc->root->storage = true;
    // The file exists from here on, as the system's own call leaves it.
    HRESULT hr = doc->Save();
    if (FAILED(hr)) return hr;
    *storage = new StorageObject(doc, doc->root.get(), STGM_READWRITE | STGM_SHARE_EXCLUSIVE);
    return S_OK;
}

HRESULT StorageOpenOnFile(const char* path, bool writable, IStorage** storage) {
    if (!storage) return STG_E_INVALIDPOINTER;
    *storage = nullptr;
    std::string native;
    if (!path || !*path || !posixfs::Native(path, native)) return STG_E_INVALIDNAME;
    struct stat st;
    if (::stat(native.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return OpenError(native);
    InitGsf();
    GError* error = nullptr;
    GsfInput* input = gsf_input_mmap_new(native.c_str(), &error);
    if (!input) {
        if (error) g_clear_error(&error);
        input = gsf_input_stdio_new(native.c_str(), &error);
    }
    if (!input) {
        if (error) g_error_free(error);
        return STG_E_ACCESSDENIED;
    }
    auto doc = std::make_shared<Document>();
    doc->native = native;
    doc->writable = writable;
    HRESULT hr = Open(input, doc);
    g_object_unref(input);
    if (FAILED(hr)) {
        doc->writable = false;
        return hr;
    }
    *storage = new StorageObject(doc, doc->root.get(),
                                 (writable ? STGM_READWRITE : STGM_READ) | STGM_SHARE_EXCLUSIVE);
    return S_OK;
}

HRESULT StorageCreateInMemory(IStorage** storage) {
    if (!storage) return STG_E_INVALIDPOINTER;
    auto doc = std::make_shared<Document>();
    doc->root->storage = true;
    *storage = new StorageObject(doc, doc->root.get(), STGM_READWRITE | STGM_SHARE_EXCLUSIVE);
    return S_OK;
}

HRESULT StorageOpenOnBytes(const BYTE* data, std::size_t size, IStorage** storage) {
    if (!storage) return STG_E_INVALIDPOINTER;
    *storage = nullptr;
    if (!data && size) return STG_E_INVALIDPOINTER;
    InitGsf();
    static const BYTE kNothing = 0;
    GsfInput* input = gsf_input_memory_new(size ? data : &kNothing, (gsf_off_t)size, FALSE);
    if (!input) return STG_E_INSUFFICIENTMEMORY;
    auto doc = std::make_shared<Document>();
    HRESULT hr = Open(input, doc);
    g_object_unref(input);
    if (FAILED(hr)) return hr;
    *storage = new StorageObject(doc, doc->root.get(), STGM_READWRITE | STGM_SHARE_EXCLUSIVE);
    return S_OK;
}

HRESULT StorageSaveToBytes(IStorage* storage, std::vector<BYTE>& bytes) {
    bytes.clear();
    if (!storage) return STG_E_INVALIDPOINTER;
    IStorage* copy = nullptr;
    HRESULT hr = StorageCreateInMemory(&copy);
    if (FAILED(hr)) return hr;
    hr = CopyStorage(storage, copy);
    if (SUCCEEDED(hr)) {
        Document& doc = static_cast<StorageObject*>(copy)->Doc();
        std::lock_guard<std::recursive_mutex> g(doc.lock);
        hr = doc.Save();
        if (SUCCEEDED(hr)) bytes.swap(doc.memory);
    }
    copy->Release();
    return hr;
}

}  // namespace qm::platform
