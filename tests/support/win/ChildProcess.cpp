#include "support/win/ChildProcess.hpp"

#include <thread>
#include <vector>

#include "base/win/UniqueHandle.hpp"

namespace corvandell::test {

std::filesystem::path siblingExecutable(const wchar_t* fileName) {
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    return std::filesystem::path(self).parent_path() / fileName;
}

ChildResult runAndCapture(const std::wstring& commandLine, DWORD timeoutMs) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    ChildResult result{static_cast<DWORD>(-1), {}};
    if (!CreatePipe(&readEnd, &writeEnd, &inheritable, 0)) {
        return result;
    }
    win::UniqueKernelHandle reader(readEnd);
    win::UniqueKernelHandle writer(writeEnd);
    SetHandleInformation(reader.get(), HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writer.get();
    startup.hStdError = writer.get();
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    PROCESS_INFORMATION process{};
    std::wstring mutableLine = commandLine;
    if (!CreateProcessW(nullptr, mutableLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                        nullptr, &startup, &process)) {
        return result;
    }
    win::UniqueKernelHandle processHandle(process.hProcess);
    win::UniqueKernelHandle threadHandle(process.hThread);
    writer.reset(); // the child holds the only write end now, so reading ends with it

    std::thread drain([&] {
        char chunk[4096];
        DWORD read = 0;
        while (ReadFile(reader.get(), chunk, sizeof(chunk), &read, nullptr) && read > 0) {
            result.output.append(chunk, read);
        }
    });
    if (WaitForSingleObject(processHandle.get(), timeoutMs) != WAIT_OBJECT_0) {
        TerminateProcess(processHandle.get(), 99);
        WaitForSingleObject(processHandle.get(), INFINITE);
    }
    drain.join();
    GetExitCodeProcess(processHandle.get(), &result.exitCode);
    return result;
}

std::filesystem::path fixtureFolder(const wchar_t* variable) {
    std::vector<wchar_t> value(32768, L'\0');
    const DWORD length = GetEnvironmentVariableW(variable, value.data(), static_cast<DWORD>(value.size()));
    if (length == 0 || length >= value.size()) {
        return {};
    }
    std::wstring path(value.data(), length);
    if (!path.empty() && path.front() == L'/') {
        path = L"Z:" + path;
    }
    return std::filesystem::path(path).make_preferred();
}

} // namespace corvandell::test
