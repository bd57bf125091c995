#include "tests/reg/reg_env.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <iterator>

#include "utils/platform/files.h"
#include "utils/platform/host.h"

namespace regtest {
namespace {

namespace fs = std::filesystem;

std::string g_native, g_folder, g_registry;

std::string ToLibrary(const std::string& native) {
    std::string out;
    qm::platform::ToWindowsPath(native.c_str(), out);
    return out;
}

std::string ToNative(const std::string& path) {
    std::string out;
    qm::platform::ToNativePath(path.c_str(), out);
    return out;
}

class Environment : public testing::Environment {
public:
    void SetUp() override {
        std::random_device rd;
        std::string tag = "qmreg-" + std::to_string(rd() % 1000000000u);
        // Beside the program rather than in the temporary folder: a tracked file in a subfolder
        // of the temporary folder takes that subfolder with it when it is deleted.
        fs::path dir = fs::current_path() / tag;
        fs::create_directories(dir);
        g_native = dir.string();
        if (g_native.back() != '/' && g_native.back() != '\\') g_native += fs::path::preferred_separator;
        g_folder = ToLibrary(g_native);
        if (g_folder.back() != '\\') g_folder += '\\';
#if defined(_WIN32)
        g_registry = "Software\\MFCQMUtils tests\\" + tag;
#else
        g_registry = g_native + "registry.db";
#endif
        qm::platform::SetRegistryStoreLocation(g_registry.c_str());
    }
    void TearDown() override {
        qm::platform::SetRegistryStoreLocation(nullptr);
#if defined(_WIN32)
        qm::platform::RegistryDeleteTree(HKEY_CURRENT_USER, g_registry.c_str());
#endif
        std::error_code ec;
        fs::remove_all(g_native, ec);
    }
};

testing::Environment* const g_environment = testing::AddGlobalTestEnvironment(new Environment);

}  // namespace

const std::string& Folder() { return g_folder; }
const std::string& NativeFolder() { return g_native; }
std::string File(const std::string& name) { return g_folder + name; }

void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(ToNative(path), std::ios::binary | std::ios::trunc);
    out << bytes;
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(ToNative(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

bool Exists(const std::string& path) {
    std::error_code ec;
    return fs::exists(ToNative(path), ec);
}

}  // namespace regtest
