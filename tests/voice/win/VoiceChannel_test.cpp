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
#include "voice/VoiceFormat.hpp"
#include "voice/win/VoiceChannel.hpp"
#include "voice/win/WaveDevices.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <numbers>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell::win {
namespace {

constexpr UINT kVoiceEndMessage = WM_APP + 5;
// Not a whole number of cycles per 20 ms block, so blocks differ in phase.
constexpr double kToneHz = 731.37;
constexpr int kLoudPeak = 4000;

std::string deviceContaining(const std::vector<std::string>& names, std::string_view part) {
    for (const std::string& name : names) {
        if (name.find(part) != std::string::npos) {
            return name;
        }
    }
    return {};
}

int peakOf(std::span<const std::uint8_t> pcm) {
    int peak = 0;
    for (std::size_t i = 0; i + 1 < pcm.size(); i += 2) {
        const auto sample = static_cast<std::int16_t>(static_cast<std::uint16_t>(pcm[i] | (pcm[i + 1] << 8)));
        peak = std::max(peak, std::abs(static_cast<int>(sample)));
    }
    return peak;
}

std::vector<std::int16_t> tone(double seconds) {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(seconds * voice::kSampleRate));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] =
            static_cast<std::int16_t>(12000.0 * std::sin(2.0 * std::numbers::pi * kToneHz *
                                                         static_cast<double>(i) / voice::kSampleRate));
    }
    return samples;
}

// The pitch of a recording: the median over its 100 ms stretches that are loud throughout,
// each from the span of its rising zero crossings. Stretches are judged alone because
// blocks the player dropped leave jumps in phase between them.
double pitchOf(const std::vector<std::int16_t>& samples) {
    constexpr std::size_t kStretch = voice::kSampleRate / 10;
    std::vector<double> pitches;
    for (std::size_t start = 0; start + kStretch <= samples.size(); start += kStretch) {
        const std::span<const std::int16_t> stretch(samples.data() + start, kStretch);
        std::size_t crossings = 0;
        std::size_t firstCrossing = 0;
        std::size_t lastCrossing = 0;
        int peak = 0;
        for (std::size_t i = 1; i < stretch.size(); ++i) {
            peak = std::max(peak, std::abs(static_cast<int>(stretch[i])));
            if (stretch[i - 1] < 0 && stretch[i] >= 0) {
                firstCrossing = crossings == 0 ? i : firstCrossing;
                lastCrossing = i;
                ++crossings;
            }
        }
        if (peak > kLoudPeak && crossings > 10) {
            pitches.push_back(static_cast<double>(crossings - 1) * voice::kSampleRate /
                              static_cast<double>(lastCrossing - firstCrossing));
        }
    }
    if (pitches.empty()) {
        return 0.0;
    }
    std::sort(pitches.begin(), pitches.end());
    return pitches[pitches.size() / 2];
}

// Records one device into a row of 200 ms buffers, for a fixed time.
class Recorder {
public:
    explicit Recorder(UINT device) {
        WAVEFORMATEX format = voiceWaveFormat();
        if (waveInOpen(&device_, device, &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) {
            device_ = nullptr;
            return;
        }
        for (Buffer& buffer : buffers_) {
            buffer.samples.resize(voice::kSampleRate / 5);
            buffer.header.lpData = reinterpret_cast<LPSTR>(buffer.samples.data());
            buffer.header.dwBufferLength = static_cast<DWORD>(buffer.samples.size() * 2);
            waveInPrepareHeader(device_, &buffer.header, sizeof(WAVEHDR));
            waveInAddBuffer(device_, &buffer.header, sizeof(WAVEHDR));
        }
        waveInStart(device_);
    }
    ~Recorder() { stop(); }
    bool isOpen() const { return device_ != nullptr; }
    std::vector<std::int16_t> stop() {
        std::vector<std::int16_t> all;
        if (device_ == nullptr) {
            return all;
        }
        waveInReset(device_);
        for (Buffer& buffer : buffers_) {
            all.insert(all.end(), buffer.samples.begin(),
                       buffer.samples.begin() + buffer.header.dwBytesRecorded / 2);
            waveInUnprepareHeader(device_, &buffer.header, sizeof(WAVEHDR));
        }
        waveInClose(device_);
        device_ = nullptr;
        return all;
    }

private:
    struct Buffer {
        WAVEHDR header{};
        std::vector<std::int16_t> samples;
    };
    HWAVEIN device_ = nullptr;
    std::array<Buffer, 40> buffers_; // 8 s
};

// Plays samples on one device until destroyed.
class Player {
public:
    Player(UINT device, std::vector<std::int16_t> samples) : samples_(std::move(samples)) {
        WAVEFORMATEX format = voiceWaveFormat();
        if (waveOutOpen(&device_, device, &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) {
            device_ = nullptr;
            return;
        }
        header_.lpData = reinterpret_cast<LPSTR>(samples_.data());
        header_.dwBufferLength = static_cast<DWORD>(samples_.size() * 2);
        waveOutPrepareHeader(device_, &header_, sizeof(header_));
        waveOutWrite(device_, &header_, sizeof(header_));
    }
    ~Player() {
        if (device_ != nullptr) {
            waveOutReset(device_);
            waveOutUnprepareHeader(device_, &header_, sizeof(header_));
            waveOutClose(device_);
        }
    }
    bool isOpen() const { return device_ != nullptr; }

private:
    HWAVEOUT device_ = nullptr;
    WAVEHDR header_{};
    std::vector<std::int16_t> samples_;
};

class VoiceChannelTest : public ::testing::Test {
protected:
    void SetUp() override {
        ann_ = test::newStandInUser("ann");
        ben_ = test::newStandInUser("ben");
        test::makeFriends(ann_, ben_);
        const std::string conversation =
            readString(test::callAs(ann_, "POST", "/api/v1/chat/conversations",
                                    "{\"friendUserId\":\"" + ben_.userId + "\"}"),
                       "id");
        roomId_ = readString(test::callAs(ann_, "POST", "/api/v1/voice/rooms",
                                          "{\"conversationId\":\"" + conversation + "\"}"),
                             "id");
        for (const test::StandInUser* user : {&ann_, &ben_}) {
            test::callAs(*user, "POST", "/api/v1/voice/rooms/" + roomId_ + "/join");
        }
    }

    VoiceChannelOptions optionsOf(const test::StandInUser& user) const {
        VoiceChannelOptions options;
        options.baseUrl = user.settings.apiBaseUrl;
        options.bearerToken = user.settings.bearerToken;
        return options;
    }

    test::StandInUser ann_, ben_;
    std::string roomId_;
};

TEST_F(VoiceChannelTest, AToneIntoOneSideComesOutOfTheOtherAtItsPitchAndAMutedSideSendsNothing) {
    const std::vector<std::string> inputs = waveInDeviceNames();
    const std::vector<std::string> outputs = waveOutDeviceNames();
    const std::string annMicrophone = deviceContaining(inputs, "CorvA");
    const std::string quietMicrophone = deviceContaining(inputs, "CorvQuiet");
    const std::string benRecording = deviceContaining(inputs, "CorvB");
    ASSERT_FALSE(annMicrophone.empty() || quietMicrophone.empty() || benRecording.empty())
        << "no PulseAudio null sinks: is the pulse fixture running? " << inputs.size() << " inputs";

    // Ann speaks into CorvA and hears on CorvQuiet; Ben is muted and hears on CorvB.
    VoiceChannelOptions annOptions = optionsOf(ann_);
    annOptions.inputDevice = annMicrophone;
    annOptions.outputDevice = deviceContaining(outputs, "CorvQuiet");
    VoiceChannelOptions benOptions = optionsOf(ben_);
    benOptions.inputDevice = quietMicrophone;
    benOptions.outputDevice = deviceContaining(outputs, "CorvB");
    benOptions.startsMuted = true;

    test::PostBox annBox;
    std::atomic<int> benLoudPlayed{0};
    std::atomic<int> annPlayed{0};
    std::atomic<int> benSent{0};
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
        Player player(waveOutDeviceNamed(deviceContaining(outputs, "CorvA")), tone(3.0));
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
    test::callAs(ann_, "POST", "/api/v1/voice/rooms/" + roomId_ + "/leave");
    // Waits without pumping, so the notice stays queued for the post box.
    for (int waitedMs = 0; ann.isRunning() && waitedMs < 5000; waitedMs += 10) {
        Sleep(10);
    }
    MSG ended{};
    ASSERT_TRUE(annBox.take(kVoiceEndMessage, ended));
    EXPECT_EQ(static_cast<VoiceEnd>(ended.wParam), VoiceEnd::ClosedByService);
    EXPECT_FALSE(ann.isRunning());
    // Joining again starts the same channel again, its ended threads tidied first.
    test::callAs(ann_, "POST", "/api/v1/voice/rooms/" + roomId_ + "/join");
    EXPECT_TRUE(ann.start(roomId_, annOptions)) << ann.failureText();
    EXPECT_TRUE(ann.isRunning());
    ann.stop();
    ben.stop();
    EXPECT_FALSE(ben.isRunning());
}

std::string hexOf(std::span<const std::uint8_t> bytes) {
    std::string hex;
    for (const std::uint8_t byte : bytes) {
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 0x0F];
    }
    return hex;
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

    const std::vector<std::uint8_t> header(16, 0xAB);
    const std::vector<std::uint8_t> marker(64, 0x11);
    std::vector<std::uint8_t> block(640);
    for (std::size_t i = 0; i < block.size(); ++i) {
        block[i] = static_cast<std::uint8_t>(i * 7);
    }
    const std::string message = hexOf(header) + hexOf(block);
    const auto frame = [](int opcode, bool fin, const std::string& hex) {
        return "{\"opcode\":" + std::to_string(opcode) + ",\"fin\":" + (fin ? "true" : "false") +
               ",\"hex\":\"" + hex + "\"}";
    };
    // The header cut across three pieces, a header alone, text, then a whole message.
    const std::string frames =
        "[" + frame(2, false, message.substr(0, 20)) + "," + frame(0, false, message.substr(20, 580)) + "," +
        frame(0, true, message.substr(600)) + "," + frame(2, true, hexOf(header)) + "," +
        frame(1, true, "68656c6c6f") + "," + frame(2, true, hexOf(header) + hexOf(marker)) + "]";
    const std::string pushed = callStandIn("POST", "/__test/voice-frames",
                                           "{\"roomId\":\"" + roomId_ + "\",\"userId\":\"" + ann_.userId +
                                               "\",\"frames\":" + frames + "}");
    ASSERT_EQ(readInt(pushed, "sockets", 0), 1) << pushed;
    const auto playedCount = [&] {
        std::lock_guard lock(mutex);
        return played.size();
    };
    for (int waitedMs = 0; playedCount() < 2 && waitedMs < 5000; waitedMs += 10) {
        Sleep(10);
    }
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
    test::callAs(ben_, "POST", "/api/v1/voice/rooms/" + roomId_ + "/leave");
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
