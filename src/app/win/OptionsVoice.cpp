// Options > Voice: voice chat on or off, muting on joining, the devices, the volumes, and a
// live meter of the chosen microphone so the user can see that it hears them.
//
// The meter opens the input device itself while the Voice tab is shown (closed on any other
// tab and when the dialog ends) and reads it from a 50 ms timer on the UI thread: the same
// four-block capture ring the voice channel uses, polled, so no thread is needed.
#include <windows.h>

#include <commctrl.h>

#include "app/InputLevel.hpp"
#include "app/OptionsInput.hpp"
#include "app/win/OptionsDialog.hpp"
#include "app/win/OptionsLayout.hpp"
#include "app/win/OptionsMessages.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/WideText.hpp"
#include "voice/win/WaveDevices.hpp"

#include <algorithm>
#include <array>

namespace corvandell::win {
namespace options {
namespace {

constexpr DWORD kDeviceListStyle = WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST;
constexpr DWORD kSpinStyle = UDS_SETBUDDYINT | UDS_ALIGNRIGHT | UDS_ARROWKEYS | UDS_NOTHOUSANDS;
constexpr DWORD kCheckStyle = WS_TABSTOP | BS_AUTOCHECKBOX;

constexpr std::array<OptionsControl, 15> kControls{{
    {kVoiceEnabled, WC_BUTTONW, L"&Enable voice chat", kCheckStyle, kLabelX, 58, 512, 22},
    {kMuteByDefault, WC_BUTTONW, L"&Mute my microphone when I join a voice room", kCheckStyle, kLabelX, 84,
     512, 22},
    {kInputDeviceLabel, WC_STATICW, L"&Input device", kLabelStyle, kLabelX, 123, kLabelWidth, 18},
    {kInputDevice, WC_COMBOBOXW, L"", kDeviceListStyle, kFieldX, 120, kFieldWidth, 200},
    {kInputVolumeLabel, WC_STATICW, L"Input &volume (%)", kLabelStyle, kLabelX, 155, kLabelWidth, 18},
    {kInputVolume, WC_EDITW, L"", kEditStyle, kFieldX, 152, 80, 24},
    {kInputVolumeSpin, UPDOWN_CLASSW, L"", kSpinStyle, kFieldX + 80, 152, 18, 24},
    {kInputLevelLabel, WC_STATICW, L"Input level", kLabelStyle, kLabelX, 187, kLabelWidth, 18},
    {kInputLevel, WC_STATICW, L"", SS_OWNERDRAW, kFieldX, 188, kFieldWidth, 16},
    {kOutputDeviceLabel, WC_STATICW, L"&Output device", kLabelStyle, kLabelX, 223, kLabelWidth, 18},
    {kOutputDevice, WC_COMBOBOXW, L"", kDeviceListStyle, kFieldX, 220, kFieldWidth, 200},
    {kOutputVolumeLabel, WC_STATICW, L"Ou&tput volume (%)", kLabelStyle, kLabelX, 255, kLabelWidth, 18},
    {kOutputVolume, WC_EDITW, L"", kEditStyle, kFieldX, 252, 80, 24},
    {kOutputVolumeSpin, UPDOWN_CLASSW, L"", kSpinStyle, kFieldX + 80, 252, 18, 24},
    {kVoiceHint, WC_STATICW,
     L"Speak to see the input level. Volumes go from 0 to 200 %. Device changes apply the next time you "
     L"join a voice room.",
     kHintStyle, kLabelX, 292, 512, 34},
}};

constexpr wchar_t kSystemDefault[] = L"System default";

// The names as listed, the system default first; a saved device that is not connected now
// stays listed (and chosen), so opening and closing the dialog never forgets it.
std::vector<std::string> fillDeviceList(HWND list, std::vector<std::string> names,
                                        const std::string& chosen) {
    names.insert(names.begin(), std::string());
    const bool isMissing = !chosen.empty() && std::find(names.begin(), names.end(), chosen) == names.end();
    if (isMissing) {
        names.push_back(chosen);
    }
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    for (const std::string& name : names) {
        std::wstring text = name.empty() ? kSystemDefault : widen(name);
        if (isMissing && name == chosen) {
            text += L" (not connected)";
        }
        SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
    }
    const auto at = std::find(names.begin(), names.end(), chosen);
    SendMessageW(list, CB_SETCURSEL, static_cast<WPARAM>(at - names.begin()), 0);
    return names;
}

std::string chosenDevice(HWND list, const std::vector<std::string>& names) {
    const LRESULT index = SendMessageW(list, CB_GETCURSEL, 0, 0);
    if (index < 0 || static_cast<size_t>(index) >= names.size()) {
        return {};
    }
    return names[static_cast<size_t>(index)];
}

} // namespace

std::span<const OptionsControl> voiceControls() {
    return kControls;
}

} // namespace options

using namespace options;

void OptionsDialog::fillVoice() {
    const Settings& settings = *host_.settings;
    CheckDlgButton(hwnd_, kVoiceEnabled, settings.voiceEnabled ? BST_CHECKED : BST_UNCHECKED);
    CheckDlgButton(hwnd_, kMuteByDefault, settings.voiceMuteByDefault ? BST_CHECKED : BST_UNCHECKED);
    inputDevices_ = fillDeviceList(control(kInputDevice), waveInDeviceNames(), settings.voiceInputDevice);
    outputDevices_ = fillDeviceList(control(kOutputDevice), waveOutDeviceNames(), settings.voiceOutputDevice);
    SetWindowTextW(control(kInputVolume), std::to_wstring(settings.voiceInputVolume).c_str());
    SetWindowTextW(control(kOutputVolume), std::to_wstring(settings.voiceOutputVolume).c_str());
}

std::optional<OptionsDialog::FieldProblem> OptionsDialog::readVoice(Settings& changed) {
    const CheckedInput<int> input = checkVolume(narrow(hwndText(control(kInputVolume))), "input");
    if (!input.isValid()) {
        return FieldProblem{kInputVolume, input.error};
    }
    const CheckedInput<int> output = checkVolume(narrow(hwndText(control(kOutputVolume))), "output");
    if (!output.isValid()) {
        return FieldProblem{kOutputVolume, output.error};
    }
    changed.voiceEnabled = IsDlgButtonChecked(hwnd_, kVoiceEnabled) == BST_CHECKED;
    changed.voiceMuteByDefault = IsDlgButtonChecked(hwnd_, kMuteByDefault) == BST_CHECKED;
    changed.voiceInputDevice = chosenDevice(control(kInputDevice), inputDevices_);
    changed.voiceOutputDevice = chosenDevice(control(kOutputDevice), outputDevices_);
    changed.voiceInputVolume = input.value;
    changed.voiceOutputVolume = output.value;
    return std::nullopt;
}

bool OptionsDialog::isMeterOpen() const noexcept {
    return meter_ != nullptr;
}

void OptionsDialog::startMeter() {
    stopMeter();
    auto capture = std::make_unique<WaveCapture>();
    if (capture->open(waveInDeviceNamed(chosenDevice(control(kInputDevice), inputDevices_)))) {
        meter_ = std::move(capture);
        SetTimer(hwnd_, kMeterTimerId, kMeterIntervalMs, nullptr);
    }
    SetWindowTextW(control(kInputLevelLabel), meter_ ? L"Input level" : L"Input level (no microphone)");
    InvalidateRect(control(kInputLevel), nullptr, FALSE);
}

void OptionsDialog::stopMeter() noexcept {
    if (hwnd_ != nullptr) {
        KillTimer(hwnd_, kMeterTimerId);
    }
    meter_.reset();
    inputLevel_ = 0;
    shownLevel_ = 0;
}

void OptionsDialog::onMeterTick() {
    if (!meter_) {
        return;
    }
    const CheckedInput<int> volume = checkVolume(narrow(hwndText(control(kInputVolume))), "input");
    int peak = -1;
    for (std::size_t block = 0; block < voice::kCaptureBlocks; ++block) {
        if (meter_->isBlockDone(block)) {
            peak = std::max(
                peak, pcmPeakPercent(meter_->recordedBytes(block), volume.isValid() ? volume.value : 100));
            meter_->requeueBlock(block);
        }
    }
    if (peak < 0) {
        return; // nothing recorded since the last tick
    }
    inputLevel_ = peak;
    // The bar jumps up at once and falls back slowly, so short sounds stay visible.
    shownLevel_ = std::max(peak, shownLevel_ - 6);
    InvalidateRect(control(kInputLevel), nullptr, FALSE);
}

void OptionsDialog::drawMeter(const DRAWITEMSTRUCT& item) const {
    const Skin& skin = currentTheme();
    RECT rect = item.rcItem;
    FillRect(item.hDC, &rect, themeBrush(skin.border));
    InflateRect(&rect, -1, -1);
    FillRect(item.hDC, &rect, themeBrush(skin.controlBackground));
    if (!meter_ || shownLevel_ <= 0) {
        return;
    }
    RECT bar = rect;
    bar.right = bar.left + MulDiv(rect.right - rect.left, std::min(shownLevel_, 100), 100);
    FillRect(item.hDC, &bar, themeBrush(skin.accent));
}

} // namespace corvandell::win
