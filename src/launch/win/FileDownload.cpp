// The exchange is the client's usual one (one session, one connection, one GET, agent
// "Corvandell/0.1", TLS when the address says https), but unlike a service call a download
// is judged strictly: a status outside 2xx, a read that fails and a body shorter than its
// Content-Length all fail it, because a file cut short must never be installed.
#include <windows.h>

#include <winhttp.h>

#include "launch/win/FileDownload.hpp"

#include "base/Utf8Path.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/WideText.hpp"
#include "base/win/WinHttpReply.hpp"
#include "base/win/WinHttpUrl.hpp"

#include <cwchar>
#include <stdexcept>
#include <vector>

namespace corvandell::win {
namespace {

// The declared length as a 64-bit number; 0 when the server sent none (chunked replies).
// Read as text when the 64-bit query is not understood, so no WinHTTP build loses it.
std::uint64_t contentLength(HINTERNET request) {
    ULONGLONG length = 0;
    DWORD bytes = sizeof(length);
    if (WinHttpQueryHeaders(request, WINHTTP_QUERY_CONTENT_LENGTH | WINHTTP_QUERY_FLAG_NUMBER64,
                            WINHTTP_HEADER_NAME_BY_INDEX, &length, &bytes, WINHTTP_NO_HEADER_INDEX)) {
        return length;
    }
    if (GetLastError() == ERROR_WINHTTP_HEADER_NOT_FOUND) {
        return 0;
    }
    wchar_t text[32] = {};
    bytes = sizeof(text) - sizeof(wchar_t);
    if (!WinHttpQueryHeaders(request, WINHTTP_QUERY_CONTENT_LENGTH, WINHTTP_HEADER_NAME_BY_INDEX, text,
                             &bytes, WINHTTP_NO_HEADER_INDEX)) {
        return 0;
    }
    return std::wcstoull(text, nullptr, 10);
}

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

void writeAll(HANDLE file, const char* data, DWORD size, const std::filesystem::path& path) {
    DWORD written = 0;
    if (!WriteFile(file, data, size, &written, nullptr) || written != size) {
        throw std::runtime_error("Could not write " + quoted(pathToUtf8(path)) + ".");
    }
}

} // namespace

std::uint64_t downloadFile(const FileDownload& download, const DownloadProgressSink& progress,
                           DownloadClock& clock, const DownloadCancel& cancel) {
    const SplitUrl url = splitUrl(widen(download.url));
    // Declared in the order they are made, so the request closes first and the session last.
    const UniqueInternetHandle session(WinHttpOpen(L"Corvandell/0.1", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY,
                                                   WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
    const UniqueInternetHandle connection(
        session ? WinHttpConnect(session.get(), url.host.c_str(), url.port, 0) : nullptr);
    const UniqueInternetHandle request(
        connection ? WinHttpOpenRequest(connection.get(), L"GET", url.pathAndQuery.c_str(), nullptr,
                                        WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
                                        url.isHttps ? WINHTTP_FLAG_SECURE : 0)
                   : nullptr);
    if (!request ||
        !WinHttpSendRequest(request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0,
                            0) ||
        !WinHttpReceiveResponse(request.get(), nullptr)) {
        throw std::runtime_error("HTTP request failed");
    }
    const DWORD status = replyStatusCode(request.get());
    if (isFailureStatus(status)) {
        throw std::runtime_error("The download of " + quoted(download.label) + " was refused (HTTP " +
                                 std::to_string(status) + ").");
    }
    const std::uint64_t length = contentLength(request.get());

    const UniqueKernelHandle file(CreateFileW(download.file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                              FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        throw std::runtime_error("Could not write " + quoted(pathToUtf8(download.file)) + ".");
    }

    DownloadRateCap cap(download.limitKbps, clock);
    DownloadProgress report{download.titleId, 0, length, 0, L"Downloading"};
    std::vector<char> buffer;
    for (;;) {
        cancel.throwIfCancelled();
        DWORD available = 0;
        if (!WinHttpQueryDataAvailable(request.get(), &available)) {
            throw std::runtime_error("The download of " + quoted(download.label) + " broke off after " +
                                     std::to_string(report.received) + " bytes.");
        }
        if (available == 0) {
            break;
        }
        buffer.resize(available);
        DWORD read = 0;
        if (!WinHttpReadData(request.get(), buffer.data(), available, &read)) {
            throw std::runtime_error("The download of " + quoted(download.label) + " broke off after " +
                                     std::to_string(report.received) + " bytes.");
        }
        if (read == 0) {
            break;
        }
        writeAll(file.get(), buffer.data(), read, download.file);
        report.received += read;
        report.percent = downloadPercent(report.received, length);
        progress(report);
        cap.afterChunk(report.received);
    }
    if (length > 0 && report.received < length) {
        throw std::runtime_error("The download of " + quoted(download.label) + " ended after " +
                                 std::to_string(report.received) + " of " + std::to_string(length) +
                                 " bytes.");
    }
    return report.received;
}

} // namespace corvandell::win
