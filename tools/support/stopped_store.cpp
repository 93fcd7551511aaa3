#include "stopped_store.h"

#include "service_url.h"

#include <windows.h>

#include <process.h>

#include <fstream>
#include <stdexcept>

namespace support {

namespace {

constexpr int most_looks = 10'000;

std::string content_of(const std::string& path) {
    std::ifstream file("Z:" + path, std::ios::binary);
    std::string text;
    std::getline(file, text, '\0');
    return text;
}

/// The store is none of this system's programs, so its own shell does it; how that ended is not
/// told here. Files are served by a child of the process.
void send(const std::wstring& signal, const std::wstring& process) {
    const std::wstring order =
        L"\"kill -" + signal + L" $(cat /proc/" + process + L"/task/*/children) " + process + L"\"";
    _wspawnl(_P_WAIT, L"Z:\\bin\\sh", L"sh", L"-c", order.c_str(), nullptr);
}

std::string process_of_store() {
    const std::string ready = content_of(environment("QUILLDECK_TEST_READY"));
    const std::string key = "\"pid\": ";
    const std::size_t at = ready.find(key);
    if (at == std::string::npos) {
        throw std::runtime_error("the ready file does not tell the store's process");
    }
    return std::to_string(std::stoul(ready.substr(at + key.size())));
}

/// The system tells it behind the program's name.
bool is_stopped(const std::string& process) {
    return content_of("/proc/" + process + "/stat").find(") T ") != std::string::npos;
}

} // namespace

stopped_store::stopped_store() {
    const std::string process = process_of_store();
    m_process.assign(process.begin(), process.end());
    send(L"STOP", m_process);
    for (int look = 0; !is_stopped(process); ++look) {
        if (look == most_looks) {
            throw std::runtime_error("the store cannot be stopped");
        }
        Sleep(1);
    }
}

stopped_store::~stopped_store() {
    send(L"CONT", m_process);
}

} // namespace support
