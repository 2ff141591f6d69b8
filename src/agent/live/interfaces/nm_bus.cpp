// Calls on org.freedesktop.NetworkManager, each on a fresh connection to
// the system bus (changes are rare; no connection is kept).
#include "agent/live/interfaces/nm_bus.h"

#include <systemd/sd-bus.h>

#include <memory>

#include "agent/live/interfaces/network_daemons.h"

namespace nvagent {

namespace {

const char* const kService = "org.freedesktop.NetworkManager";
const char* const kPath = "/org/freedesktop/NetworkManager";
const char* const kDeviceInterface = "org.freedesktop.NetworkManager.Device";

struct BusUnref {
    void operator()(sd_bus* b) const { sd_bus_flush_close_unref(b); }
};
struct MessageUnref {
    void operator()(sd_bus_message* m) const { sd_bus_message_unref(m); }
};
using Bus = std::unique_ptr<sd_bus, BusUnref>;
using Message = std::unique_ptr<sd_bus_message, MessageUnref>;

// The system bus, when NetworkManager of this namespace is on it.
Bus Open(std::string& err) {
    if (BusNameOwnerHere(kService) == 0) {
        err = "NetworkManager does not run in this network namespace";
        return Bus();
    }
    sd_bus* raw = nullptr;
    if (sd_bus_open_system(&raw) < 0) {
        err = "cannot reach the system bus";
        return Bus();
    }
    return Bus(raw);
}

std::string ErrorText(const sd_bus_error& e, int r) {
    if (e.message != nullptr)
        return e.message;
    return "D-Bus error " + std::to_string(-r);
}

// The object path a method call answered (r its result), or empty with
// err.
std::string AnsweredPath(int r, sd_bus_message* raw, sd_bus_error& error, std::string& err) {
    Message reply(raw);
    if (r < 0)
        err = ErrorText(error, r);
    sd_bus_error_free(&error);
    const char* path = nullptr;
    if (r < 0)
        return std::string();
    if (sd_bus_message_read(reply.get(), "o", &path) < 0 || path == nullptr) {
        err = "NetworkManager answered no object";
        return std::string();
    }
    return path;
}

// The object path of iface's device, or empty.
std::string DevicePath(sd_bus* bus, const std::string& iface, std::string& err) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* raw = nullptr;
    int r = sd_bus_call_method(bus, kService, kPath, kService, "GetDeviceByIpIface", &error, &raw,
                               "s", iface.c_str());
    return AnsweredPath(r, raw, error, err);
}

// A method on the manager taking one object path; false with err.
bool CallWithPath(const char* method, const std::string& path, std::string& err) {
    Bus bus = Open(err);
    if (!bus)
        return false;
    sd_bus_error error = SD_BUS_ERROR_NULL;
    int r = sd_bus_call_method(bus.get(), kService, kPath, kService, method, &error, nullptr, "o",
                               path.c_str());
    if (r < 0)
        err = ErrorText(error, r);
    sd_bus_error_free(&error);
    return r >= 0;
}

}  // namespace

bool NetworkManagerRunsHere() {
    return BusNameOwnerHere(kService) != 0;
}

bool NetworkManagerManages(const std::string& iface) {
    std::string err;
    Bus bus = Open(err);
    if (!bus)
        return false;
    std::string device = DevicePath(bus.get(), iface, err);
    if (device.empty())
        return false;
    sd_bus_error error = SD_BUS_ERROR_NULL;
    int managed = 0;
    int r = sd_bus_get_property_trivial(bus.get(), kService, device.c_str(), kDeviceInterface,
                                        "Managed", &error, 'b', &managed);
    sd_bus_error_free(&error);
    return r >= 0 && managed != 0;
}

std::string CreateCheckpoint(const std::string& iface, unsigned timeoutSeconds, std::string& err) {
    Bus bus = Open(err);
    if (!bus)
        return std::string();
    std::string device = DevicePath(bus.get(), iface, err);
    if (device.empty())
        return std::string();
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* raw = nullptr;
    // Flags 0: only this device, its connections as they are.
    int r = sd_bus_call_method(bus.get(), kService, kPath, kService, "CheckpointCreate", &error,
                               &raw, "aouu", 1, device.c_str(), timeoutSeconds, 0u);
    return AnsweredPath(r, raw, error, err);
}

bool DestroyCheckpoint(const std::string& path, std::string& err) {
    return CallWithPath("CheckpointDestroy", path, err);
}

bool RollbackCheckpoint(const std::string& path, std::string& err) {
    return CallWithPath("CheckpointRollback", path, err);
}

}  // namespace nvagent
