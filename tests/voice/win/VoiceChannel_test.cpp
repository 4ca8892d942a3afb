// Two voice channels in one room through the stand-in's relay, on a private PulseAudio
// server (tests/support/pulse-fixture): a tone played into one side's microphone comes out
// of the other side's speakers at the same pitch, a muted side sends nothing, and the
// service closing the socket ends the channel quietly.
#include <windows.h>

#include <mmsystem.h>

#include "api/JsonText.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/SocialUsers.hpp"
#include "support/win/TonePlayer.hpp"
#include "voice/VoiceFormat.hpp"
#include "voice/win/VoiceChannel.hpp"
#include "voice/win/WaveDevices.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <functional>
#include <mutex>
#include <numeric>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvandell::win {
namespace {

constexpr UINT kVoiceEndMessage = WM_APP + 5;
constexpr double kToneHz = 731.37;
constexpr int kLoudPeak = 4000;

int peakOf(std::span<const std::uint8_t> pcm) {
    int peak = 0;
    for (std::size_t i = 0; i + 1 < pcm.size(); i += 2) {
        peak =
            std::max(peak, std::abs(static_cast<int>(static_cast<std::int16_t>(pcm[i] | (pcm[i + 1] << 8)))));
    }
    return peak;
}

// Waits without pumping, so notices posted to a PostBox stay queued for it.
bool waitWithoutPumping(const std::function<bool()>& done, int timeoutMs) {
    for (int waitedMs = 0; !done() && waitedMs < timeoutMs; waitedMs += 10) {
        Sleep(10);
    }
    return done();
}

// The pitch of a recording: the median over its 100 ms stretches that are loud throughout,
// each from the span of its rising zero crossings. Stretches are judged alone because
// blocks the player dropped leave jumps in phase between them.
double pitchOf(const std::vector<std::int16_t>& samples) {
    constexpr std::size_t kStretch = voice::kSampleRate / 10;
    std::vector<double> pitches;
    for (std::size_t start = 0; start + kStretch <= samples.size(); start += kStretch) {
        std::size_t crossings = 0, first = 0, last = 0;
        int peak = 0;
        for (std::size_t i = start + 1; i < start + kStretch; ++i) {
            peak = std::max(peak, std::abs(static_cast<int>(samples[i])));
            if (samples[i - 1] < 0 && samples[i] >= 0) {
                first = crossings++ == 0 ? i : first;
                last = i;
            }
        }
        if (peak > kLoudPeak && crossings > 10) {
            pitches.push_back(static_cast<double>(crossings - 1) * voice::kSampleRate /
                              static_cast<double>(last - first));
        }
    }
    std::sort(pitches.begin(), pitches.end());
    return pitches.empty() ? 0.0 : pitches[pitches.size() / 2];
}

// Records one device into a row of 200 ms buffers (8 s in all) until stopped.
class Recorder {
public:
    explicit Recorder(UINT device) {
        WAVEFORMATEX format = voiceWaveFormat();
        if (waveInOpen(&device_, device, &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) {
            device_ = nullptr;
            return;
        }
        for (auto& [header, samples] : buffers_) {
            samples.resize(voice::kSampleRate / 5);
            header.lpData = reinterpret_cast<LPSTR>(samples.data());
            header.dwBufferLength = static_cast<DWORD>(samples.size() * 2);
            waveInPrepareHeader(device_, &header, sizeof(WAVEHDR));
            waveInAddBuffer(device_, &header, sizeof(WAVEHDR));
        }
        waveInStart(device_);
    }
    ~Recorder() { stop(); }
    bool isOpen() const { return device_ != nullptr; }
    std::vector<std::int16_t> stop() {
        std::vector<std::int16_t> all;
        if (device_ != nullptr) {
            waveInReset(device_);
            for (auto& [header, samples] : buffers_) {
                all.insert(all.end(), samples.begin(), samples.begin() + header.dwBytesRecorded / 2);
                waveInUnprepareHeader(device_, &header, sizeof(WAVEHDR));
            }
            waveInClose(std::exchange(device_, nullptr));
        }
        return all;
    }

private:
    HWAVEIN device_ = nullptr;
    std::array<std::pair<WAVEHDR, std::vector<std::int16_t>>, 40> buffers_{};
};

class VoiceChannelTest : public ::testing::Test {
protected:
    void SetUp() override {
        test::makeFriends(ann_, ben_);
        const std::string conversation =
            readString(test::callAs(ann_, "POST", "/api/v1/chat/conversations",
                                    "{\"friendUserId\":\"" + ben_.userId + "\"}"),
                       "id");
        roomId_ = readString(test::callAs(ann_, "POST", "/api/v1/voice/rooms",
                                          "{\"conversationId\":\"" + conversation + "\"}"),
                             "id");
        roomCall(ann_, "join");
        roomCall(ben_, "join");
    }
    void roomCall(const test::StandInUser& user, const std::string& action) const {
        test::callAs(user, "POST", "/api/v1/voice/rooms/" + roomId_ + "/" + action);
    }
    static VoiceChannelOptions optionsOf(const test::StandInUser& user, std::string input = "",
                                         std::string output = "") {
        VoiceChannelOptions options;
        options.baseUrl = user.settings.apiBaseUrl;
        options.bearerToken = user.settings.bearerToken;
        options.inputDevice = std::move(input);
        options.outputDevice = std::move(output);
        return options;
    }

    test::StandInUser ann_ = test::newStandInUser("ann"), ben_ = test::newStandInUser("ben");
    std::string roomId_;
};

TEST_F(VoiceChannelTest, AToneIntoOneSideComesOutOfTheOtherAtItsPitchAndAMutedSideSendsNothing) {
    const std::vector<std::string> inputs = waveInDeviceNames();
    const std::vector<std::string> outputs = waveOutDeviceNames();
    const std::string annMicrophone = test::deviceContaining(inputs, "CorvA");
    const std::string quietMicrophone = test::deviceContaining(inputs, "CorvQuiet");
    const std::string benRecording = test::deviceContaining(inputs, "CorvB");
    ASSERT_FALSE(annMicrophone.empty() || quietMicrophone.empty() || benRecording.empty())
        << "no PulseAudio null sinks: is the pulse fixture running? " << inputs.size() << " inputs";

    // Ann speaks into CorvA and hears on CorvQuiet; Ben is muted and hears on CorvB.
    const VoiceChannelOptions annOptions =
        optionsOf(ann_, annMicrophone, test::deviceContaining(outputs, "CorvQuiet"));
    VoiceChannelOptions benOptions =
        optionsOf(ben_, quietMicrophone, test::deviceContaining(outputs, "CorvB"));
    benOptions.startsMuted = true;

    test::PostBox annBox;
    std::atomic<int> benLoudPlayed{0}, annPlayed{0}, benSent{0};
    VoiceChannel ann(annBox.hwnd(), kVoiceEndMessage);
    VoiceChannel ben(nullptr, 0);
    ann.setObserver([&](VoiceBlockEvent event, std::span<const std::uint8_t>) {
        annPlayed += event == VoiceBlockEvent::Played ? 1 : 0;
    });
    ben.setObserver([&](VoiceBlockEvent event, std::span<const std::uint8_t> pcm) {
        if (event == VoiceBlockEvent::Sent) {
            ++benSent;
        } else if (peakOf(pcm) >= kLoudPeak) {
            ++benLoudPlayed;
        }
    });
    ASSERT_TRUE(ann.start(roomId_, annOptions)) << ann.failureText();
    ASSERT_TRUE(ben.start(roomId_, benOptions)) << ben.failureText();
    EXPECT_TRUE(ben.isMuted());

    Recorder recorder(waveInDeviceNamed(benRecording));
    ASSERT_TRUE(recorder.isOpen());
    {
        // Not a whole number of cycles per 20 ms block, so blocks differ in phase.
        test::TonePlayer player(waveOutDeviceNamed(test::deviceContaining(outputs, "CorvA")), kToneHz, 3.0);
        ASSERT_TRUE(player.isOpen());
        // A second of tone heard on Ben's side, then the rest of it.
        EXPECT_TRUE(test::pumpUntil([&] { return benLoudPlayed >= 50; }, 15000)) << benLoudPlayed;
        test::pumpUntil([] { return false; }, 1500);
    }
    const std::vector<std::int16_t> heard = recorder.stop();
    EXPECT_NEAR(pitchOf(heard), kToneHz, 10.0) << heard.size() << " samples recorded";
    EXPECT_EQ(benSent.load(), 0);
    EXPECT_EQ(annPlayed.load(), 0);

    // The service closes Ann's socket when she leaves through the API; her channel ends by
    // itself and says so, and stopping it afterwards is quiet.
    roomCall(ann_, "leave");
    waitWithoutPumping([&] { return !ann.isRunning(); }, 5000);
    MSG ended{};
    ASSERT_TRUE(annBox.take(kVoiceEndMessage, ended));
    EXPECT_EQ(static_cast<VoiceEnd>(ended.wParam), VoiceEnd::ClosedByService);
    EXPECT_FALSE(ann.isRunning());
    // Joining again starts the same channel again, its ended threads tidied first.
    roomCall(ann_, "join");
    EXPECT_TRUE(ann.start(roomId_, annOptions)) << ann.failureText();
    EXPECT_TRUE(ann.isRunning());
    ann.stop();
    ben.stop();
    EXPECT_FALSE(ben.isRunning());
}

TEST_F(VoiceChannelTest, AFragmentedMessagePlaysWholeAndHeadersAloneOrTextPlayNothing) {
    test::PostBox box;
    VoiceChannel ann(box.hwnd(), kVoiceEndMessage);
    std::mutex mutex;
    std::vector<std::vector<std::uint8_t>> played;
    ann.setObserver([&](VoiceBlockEvent event, std::span<const std::uint8_t> pcm) {
        if (event == VoiceBlockEvent::Played) {
            std::lock_guard lock(mutex);
            played.emplace_back(pcm.begin(), pcm.end());
        }
    });
    ASSERT_TRUE(ann.start(roomId_, optionsOf(ann_))) << ann.failureText();

    const auto hexOf = [](std::span<const std::uint8_t> bytes) {
        std::string hex;
        for (const std::uint8_t byte : bytes) {
            hex += {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 0x0F]};
        }
        return hex;
    };
    const auto frame = [](int opcode, bool fin, const std::string& hex) {
        return "{\"opcode\":" + std::to_string(opcode) + ",\"fin\":" + (fin ? "true" : "false") +
               ",\"hex\":\"" + hex + "\"},";
    };
    const std::vector<std::uint8_t> marker(64, 0x11);
    std::vector<std::uint8_t> block(640);
    std::iota(block.begin(), block.end(), std::uint8_t{0});
    const std::string header = hexOf(std::vector<std::uint8_t>(16, 0xAB));
    const std::string message = header + hexOf(block);
    // The header cut across three pieces, a header alone, text, then a whole message.
    const std::string frames = frame(2, false, message.substr(0, 20)) +
                               frame(0, false, message.substr(20, 580)) +
                               frame(0, true, message.substr(600)) + frame(2, true, header) +
                               frame(1, true, "68656c6c6f") + frame(2, true, header + hexOf(marker));
    const std::string pushed =
        callStandIn("POST", "/__test/voice-frames",
                    "{\"roomId\":\"" + roomId_ + "\",\"userId\":\"" + ann_.userId + "\",\"frames\":[" +
                        frames.substr(0, frames.size() - 1) + "]}");
    ASSERT_EQ(readInt(pushed, "sockets", 0), 1) << pushed;
    const auto playedCount = [&] {
        std::lock_guard lock(mutex);
        return played.size();
    };
    waitWithoutPumping([&] { return playedCount() >= 2; }, 5000);
    Sleep(200); // nothing more is to come
    {
        std::lock_guard lock(mutex);
        ASSERT_EQ(played.size(), 2u);
        EXPECT_EQ(played[0], block);
        EXPECT_EQ(played[1], marker);
    }
    EXPECT_TRUE(ann.isRunning());
    ann.stop();
    MSG ended{};
    EXPECT_FALSE(box.take(kVoiceEndMessage, ended)); // a stop asked for is not reported
}

TEST_F(VoiceChannelTest, ASocketTheServiceRefusesLeavesTheChannelStoppedWithTheStatus) {
    roomCall(ben_, "leave");
    VoiceChannel ben(nullptr, 0);
    EXPECT_FALSE(ben.start(roomId_, optionsOf(ben_)));
    EXPECT_EQ(ben.failureText(), "Voice connection refused: HTTP 403");
    EXPECT_FALSE(ben.isRunning());
    VoiceChannelOptions anonymous = optionsOf(ben_);
    anonymous.bearerToken.clear();
    EXPECT_FALSE(ben.start(roomId_, anonymous));
    EXPECT_EQ(ben.failureText(), "Voice connection refused: HTTP 401");
}

} // namespace
} // namespace corvandell::win
