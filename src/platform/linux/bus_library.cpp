#include "platform/linux/bus_library.h"

#include <dlfcn.h>
#include <memory>

namespace {

template <typename Function> bool Find(void* module, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(module, name));
    return function != nullptr;
}

bool FindAll(void* module, BusLibrary* found) {
    return Find(module, "sd_bus_open_system", found->openSystem) &&
           Find(module, "sd_bus_open_user", found->openUser) &&
           Find(module, "sd_bus_flush_close_unref", found->flushCloseUnref) &&
           Find(module, "sd_bus_get_unique_name", found->getUniqueName) &&
           Find(module, "sd_bus_get_fd", found->getFile) &&
           Find(module, "sd_bus_get_events", found->getEvents) &&
           Find(module, "sd_bus_get_timeout", found->getTimeout) &&
           Find(module, "sd_bus_process", found->process) &&
           Find(module, "sd_bus_add_match_async", found->matchAsync) &&
           Find(module, "sd_bus_match_signal_async", found->matchSignalAsync) &&
           Find(module, "sd_bus_message_new_method_call", found->newMethodCall) &&
           Find(module, "sd_bus_call_async", found->callAsync) && Find(module, "sd_bus_send", found->send) &&
           Find(module, "sd_bus_message_unref", found->unrefMessage) &&
           Find(module, "sd_bus_message_is_method_error", found->isMethodError) &&
           Find(module, "sd_bus_message_append", found->append) &&
           Find(module, "sd_bus_message_append_array", found->appendArray) &&
           Find(module, "sd_bus_message_open_container", found->openContainer) &&
           Find(module, "sd_bus_message_close_container", found->closeContainer) &&
           Find(module, "sd_bus_path_encode", found->encodePath) &&
           Find(module, "sd_bus_message_read", found->read) &&
           Find(module, "sd_bus_message_enter_container", found->enterContainer) &&
           Find(module, "sd_bus_message_exit_container", found->exitContainer) &&
           Find(module, "sd_bus_message_skip", found->skip) &&
           Find(module, "sd_pid_get_session", found->sessionOfProcess);
}

}  // namespace

const BusLibrary* LoadBusLibrary() {
    static const std::unique_ptr<const BusLibrary> library = []() -> std::unique_ptr<const BusLibrary> {
        void* module = dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) {
            return nullptr;
        }
        auto found = std::make_unique<BusLibrary>();
        if (!FindAll(module, found.get())) {
            dlclose(module);
            return nullptr;
        }
        return found;
    }();
    return library.get();
}
