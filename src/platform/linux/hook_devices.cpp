#include "platform/linux/hook_devices.h"

#include <X11/extensions/XInput2.h>
#include <map>
#include <utility>

namespace {

bool HasXtestMark(Display* display, int device) {
    const Atom mark = XInternAtom(display, "XTEST Device", True);
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    if (mark == None || XIGetProperty(display, device, mark, 0, 1, False, AnyPropertyType, &type, &format,
                                      &count, &left, &data) != Success) {
        return false;
    }
    const bool marked = data != nullptr && format == 8 && count > 0 && data[0] != 0;
    if (data != nullptr) {
        XFree(data);
    }
    return marked;
}

// Returns whether the device declares its first axis as absolute.
bool IsAbsolute(const XIDeviceInfo& info) {
    for (int index = 0; index < info.num_classes; ++index) {
        if (info.classes[index]->type == XIValuatorClass) {
            const auto* axis = reinterpret_cast<const XIValuatorClassInfo*>(info.classes[index]);
            if (axis->number == 0) {
                return axis->mode == XIModeAbsolute;
            }
        }
    }
    return false;
}

}  // namespace

void ReadDevices(InputThread& thread) {
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(thread.display, XIAllDevices, &count);
    if (devices == nullptr) {
        return;
    }
    std::map<int, PointerDevice> known;
    for (int index = 0; index < count; ++index) {
        const XIDeviceInfo& info = devices[index];
        if (info.use != XISlavePointer && info.use != XISlaveKeyboard && info.use != XIFloatingSlave) {
            continue;
        }
        PointerDevice device;
        const auto before = thread.devices.find(info.deviceid);
        if (before != thread.devices.end()) {
            device = before->second;
        }
        device.injects = HasXtestMark(thread.display, info.deviceid);
        if (IsAbsolute(info)) {
            device.motion.kind = RawKind::Positions;
        }
        known.emplace(info.deviceid, std::move(device));
    }
    XIFreeDeviceInfo(devices);
    thread.devices.swap(known);
}

bool IsInjected(const InputThread& thread, int sourceDevice) {
    const auto device = thread.devices.find(sourceDevice);
    return device != thread.devices.end() && device->second.injects;
}
