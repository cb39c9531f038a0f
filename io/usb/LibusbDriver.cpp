#include "LibusbDriver.h"

#include <libusb.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <mutex>

#include "UsbConstants.h"

namespace sonmetra::usb {

struct LibusbDriver::Shared {
    std::mutex mutex;
    libusb_context* context = nullptr;  // made at the first open; guarded by mutex
    std::string lastError;              // guarded by mutex

    ~Shared() {
        if (context) libusb_exit(context);
    }
    void setError(std::string text) {
        std::lock_guard lock(mutex);
        lastError = std::move(text);
    }
};

namespace {

std::string describe(int code) { return std::string(libusb_error_name(code)) + " (" + libusb_strerror(code) + ")"; }

struct Endpoints {
    int interfaceNumber = -1;
    std::uint8_t in = 0;
    std::uint8_t out = 0;
};

// The first interface whose first setting has a bulk IN and a bulk OUT endpoint.
Endpoints findBulkEndpoints(libusb_device* device) {
    Endpoints found;
    libusb_config_descriptor* config = nullptr;
    if (libusb_get_active_config_descriptor(device, &config) != 0 || config == nullptr) return found;
    for (int i = 0; i < config->bNumInterfaces && found.interfaceNumber < 0; ++i) {
        const libusb_interface& iface = config->interface[i];
        if (iface.num_altsetting < 1) continue;
        const libusb_interface_descriptor& setting = iface.altsetting[0];
        Endpoints e;
        for (int k = 0; k < setting.bNumEndpoints; ++k) {
            const libusb_endpoint_descriptor& ep = setting.endpoint[k];
            if ((ep.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK) != LIBUSB_TRANSFER_TYPE_BULK) continue;
            if ((ep.bEndpointAddress & LIBUSB_ENDPOINT_DIR_MASK) == LIBUSB_ENDPOINT_IN) {
                if (e.in == 0) e.in = ep.bEndpointAddress;
            } else if (e.out == 0) {
                e.out = ep.bEndpointAddress;
            }
        }
        if (e.in != 0 && e.out != 0) {
            e.interfaceNumber = setting.bInterfaceNumber;
            found = e;
        }
    }
    libusb_free_config_descriptor(config);
    return found;
}

class LibusbTransport : public IUsbTransport {
public:
    LibusbTransport(std::shared_ptr<LibusbDriver::Shared> shared, libusb_device_handle* handle, Endpoints endpoints,
                    int idleTimeoutMs)
        : m_shared(std::move(shared)), m_handle(handle), m_endpoints(endpoints), m_timeoutMs(idleTimeoutMs) {}
    ~LibusbTransport() override { closeConnection(); }

    bool controlRequest(const ControlPacket& packet, std::uint8_t* data, std::uint32_t length,
                        std::uint32_t& moved) override {
        moved = 0;
        if (m_handle == nullptr || length > 0xFFFF) return false;
        const auto requestType =
            static_cast<std::uint8_t>((packet.toHost() ? LIBUSB_ENDPOINT_IN : LIBUSB_ENDPOINT_OUT) |
                                      ((packet.requestType & 0x3) << 5) | (packet.recipient & 0x1F));
        const int r = libusb_control_transfer(m_handle, requestType, packet.request, packet.value, packet.index, data,
                                              static_cast<std::uint16_t>(length), static_cast<unsigned>(m_timeoutMs));
        if (r < 0) {
            m_shared->setError("control request failed: " + describe(r));
            return false;
        }
        moved = static_cast<std::uint32_t>(r);
        return true;
    }

    bool bulkRead(std::uint32_t pipe, std::uint8_t* data, std::uint32_t length, std::uint32_t& moved) override {
        if (pipe != kReadPipe) return badPipe(pipe, moved);
        return bulk(m_endpoints.in, data, length, moved);
    }

    bool bulkWrite(std::uint32_t pipe, const std::uint8_t* data, std::uint32_t length, std::uint32_t& moved) override {
        if (pipe != kWritePipe) return badPipe(pipe, moved);
        // libusb takes a non-const buffer for both directions; it only reads from it here.
        return bulk(m_endpoints.out, const_cast<std::uint8_t*>(data), length, moved);
    }

    bool closeConnection() override {
        if (m_handle == nullptr) return true;
        const int r = libusb_release_interface(m_handle, m_endpoints.interfaceNumber);
        libusb_close(m_handle);
        m_handle = nullptr;
        if (r != 0 && r != LIBUSB_ERROR_NO_DEVICE) {
            m_shared->setError("releasing the interface failed: " + describe(r));
            return false;
        }
        return true;
    }

private:
    bool badPipe(std::uint32_t pipe, std::uint32_t& moved) {
        moved = 0;
        m_shared->setError("no endpoint for pipe " + std::to_string(pipe));
        return false;
    }

    // Moves `length` bytes, going on as long as data move within the idle
    // time. A transfer that ends short (a short packet) ends the call.
    bool bulk(std::uint8_t endpoint, std::uint8_t* data, std::uint32_t length, std::uint32_t& moved) {
        moved = 0;
        if (m_handle == nullptr) return false;
        while (moved < length) {
            const int want = static_cast<int>(std::min<std::uint32_t>(length - moved, INT_MAX));
            int got = 0;
            const int r =
                libusb_bulk_transfer(m_handle, endpoint, data + moved, want, &got, static_cast<unsigned>(m_timeoutMs));
            moved += static_cast<std::uint32_t>(std::max(got, 0));
            if (r == 0) {
                if (got < want) break;
                continue;
            }
            if (r == LIBUSB_ERROR_TIMEOUT && got > 0) continue;
            m_shared->setError(std::string("bulk transfer on endpoint ") + hex(endpoint) + " failed after " +
                               std::to_string(moved) + " of " + std::to_string(length) + " bytes: " + describe(r));
            return false;
        }
        return true;
    }

    static std::string hex(std::uint8_t v) {
        char b[8];
        std::snprintf(b, sizeof b, "0x%02X", v);
        return b;
    }

    std::shared_ptr<LibusbDriver::Shared> m_shared;
    libusb_device_handle* m_handle;
    Endpoints m_endpoints;
    int m_timeoutMs;
};

}  // namespace

LibusbDriver::LibusbDriver(std::map<std::string, UsbId> ids, int idleTimeoutMs)
    : m_ids(std::move(ids)), m_idleTimeoutMs(std::max(1, idleTimeoutMs)), m_shared(std::make_shared<Shared>()) {}

LibusbDriver::~LibusbDriver() = default;

const UsbId* LibusbDriver::idFor(const std::string& deviceName) const {
    std::string name = deviceName;
    if (const auto at = name.find_last_of('\\'); at != std::string::npos) name = name.substr(at + 1);
    const auto it = m_ids.find(name);
    return it == m_ids.end() ? nullptr : &it->second;
}

std::unique_ptr<IUsbTransport> LibusbDriver::openUnit(const std::string& deviceName) {
    const UsbId* id = idFor(deviceName);
    if (id == nullptr) {
        m_shared->setError("no USB id is set for " + deviceName);
        return nullptr;
    }
    const std::string wanted = formatUsbId(*id);
    libusb_context* context = nullptr;
    {
        std::lock_guard lock(m_shared->mutex);
        if (m_shared->context == nullptr) {
            const int r = libusb_init(&m_shared->context);
            if (r != 0) {
                m_shared->context = nullptr;
                m_shared->lastError = "libusb cannot start: " + describe(r);
                return nullptr;
            }
        }
        context = m_shared->context;
    }

    libusb_device** list = nullptr;
    const ssize_t count = libusb_get_device_list(context, &list);
    if (count < 0) {
        m_shared->setError("cannot list USB devices: " + describe(static_cast<int>(count)));
        return nullptr;
    }
    libusb_device* device = nullptr;
    for (ssize_t i = 0; i < count && device == nullptr; ++i) {
        libusb_device_descriptor desc{};
        if (libusb_get_device_descriptor(list[i], &desc) == 0 && desc.idVendor == id->vendor &&
            desc.idProduct == id->product)
            device = libusb_ref_device(list[i]);
    }
    libusb_free_device_list(list, 1);
    if (device == nullptr) {
        m_shared->setError("no USB device " + wanted + " is connected");
        return nullptr;
    }

    const Endpoints endpoints = findBulkEndpoints(device);
    libusb_device_handle* handle = nullptr;
    int r = endpoints.interfaceNumber < 0 ? LIBUSB_ERROR_NOT_FOUND : libusb_open(device, &handle);
    libusb_unref_device(device);
    if (endpoints.interfaceNumber < 0) {
        m_shared->setError("USB device " + wanted + " has no interface with bulk IN and OUT endpoints");
        return nullptr;
    }
    if (r != 0) {
        m_shared->setError("cannot open USB device " + wanted + ": " + describe(r) +
                           (r == LIBUSB_ERROR_ACCESS ? "; is the udev rule installed?" : ""));
        return nullptr;
    }
    libusb_set_auto_detach_kernel_driver(handle, 1);
    r = libusb_claim_interface(handle, endpoints.interfaceNumber);
    if (r != 0) {
        libusb_close(handle);
        m_shared->setError("cannot claim interface " + std::to_string(endpoints.interfaceNumber) + " of " + wanted +
                           ": " + describe(r));
        return nullptr;
    }
    return std::make_unique<LibusbTransport>(m_shared, handle, endpoints, m_idleTimeoutMs);
}

std::string LibusbDriver::unitDescription(const std::string& deviceName) const {
    const UsbId* id = idFor(deviceName);
    std::string name = deviceName;
    if (const auto at = name.find_last_of('\\'); at != std::string::npos) name = name.substr(at + 1);
    return "USB unit " + name + " (" + (id ? formatUsbId(*id) : std::string("no id set")) + ")";
}

std::string LibusbDriver::lastError() const {
    std::lock_guard lock(m_shared->mutex);
    return m_shared->lastError;
}

bool parseUsbId(const std::string& text, UsbId& id) {
    unsigned vendor = 0, product = 0;
    char tail = 0;
    if (text.size() != 9 || text[4] != ':') return false;
    if (std::sscanf(text.c_str(), "%4x:%4x%c", &vendor, &product, &tail) != 2) return false;
    for (const char c : text)
        if (c != ':' && !std::isxdigit(static_cast<unsigned char>(c))) return false;
    id.vendor = static_cast<std::uint16_t>(vendor);
    id.product = static_cast<std::uint16_t>(product);
    return true;
}

std::string formatUsbId(const UsbId& id) {
    char b[16];
    std::snprintf(b, sizeof b, "%04x:%04x", id.vendor, id.product);
    return b;
}

}  // namespace sonmetra::usb
