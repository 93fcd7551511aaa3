#include "second_process.h"

#include "utils/module.h"

#include <cstring>
#include <stdexcept>

namespace support {

namespace {

std::string read_line(HANDLE from) {
    std::string line;
    char c = 0;
    DWORD size = 0;
    while (ReadFile(from, &c, 1, &size, nullptr) && size == 1) {
        if (c == '\n') {
            return line;
        }
        line.push_back(c);
    }
    throw std::runtime_error("the other process has ended");
}

void write_line(HANDLE to, const std::string& line) {
    const std::string text = line + "\n";
    DWORD size = 0;
    if (!WriteFile(to, text.data(), static_cast<DWORD>(text.size()), &size, nullptr)) {
        throw std::runtime_error("the other process has ended");
    }
}

/// The end of a new pipe that this process keeps; the other one goes to `theirs`.
utils::unique_handle make_pipe(bool we_write, utils::unique_handle& theirs) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    utils::unique_handle ours;
    CreatePipe((we_write ? theirs : ours).put(), (we_write ? ours : theirs).put(), &inherited, 0);
    SetHandleInformation(ours.get(), HANDLE_FLAG_INHERIT, 0);
    return ours;
}

} // namespace

second_process::second_process() : second_process(utils::own_module_path()) {}

second_process::second_process(const std::wstring& path) {
    std::wstring command = L"second --second-process";
    utils::unique_handle its_input;
    utils::unique_handle its_output;
    to_ = make_pipe(true, its_input);
    from_ = make_pipe(false, its_output);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = its_input.get();
    startup.hStdOutput = its_output.get();
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &process)) {
        throw std::runtime_error("cannot start the second process");
    }
    CloseHandle(process.hThread);
    process_.reset(process.hProcess);
}

second_process::~second_process() {
    kill();
}

std::string second_process::ask(const std::string& line) const {
    write_line(to_.get(), line);
    return read_line(from_.get());
}

void second_process::kill() const {
    TerminateProcess(process_.get(), 1);
    WaitForSingleObject(process_.get(), INFINITE);
}

void serve_if_second(int argc, char** argv,
                     const std::function<std::string(const std::string&)>& answer) {
    if (argc != 2 || std::strcmp(argv[1], "--second-process") != 0) {
        return;
    }
    try {
        for (;;) {
            write_line(GetStdHandle(STD_OUTPUT_HANDLE),
                       answer(read_line(GetStdHandle(STD_INPUT_HANDLE))));
        }
    } catch (const std::exception&) {
        ExitProcess(0);
    }
}

} // namespace support
