#include "utils/platform/messagebox.h"

#include <atomic>

namespace qm::platform {
namespace {

std::atomic<MessageBoxService> g_service{&DefaultMessageBox};

}  // namespace

MessageBoxService SetMessageBoxService(MessageBoxService service) {
    return g_service.exchange(service ? service : &DefaultMessageBox);
}

int ShowMessageBox(const char* text, const char* caption, UINT type) {
    return g_service.load()(text ? text : "", caption ? caption : "", type);
}

}  // namespace qm::platform
