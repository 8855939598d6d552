// The worked examples of docs/protocol.md, against the messages that the library writes.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include "tests/module/twin.h"

namespace {

// Blocks that begin with "```hex NAME"; in a line, "#" ends the bytes.
std::map<std::string, Bytes> examplesOfPage() {
    const std::string kBegin = "```hex ";
    std::map<std::string, Bytes> examples;
    std::ifstream page(PROTOCOL_PAGE);
    Bytes* current = nullptr;
    for (std::string line; std::getline(page, line);) {
        if (line.rfind("```", 0) == 0) {
            const bool begins = line.rfind(kBegin, 0) == 0;
            current = begins ? &examples[line.substr(kBegin.size())] : nullptr;
        } else if (current) {
            std::istringstream bytes(line.substr(0, line.find('#')));
            for (std::string byte; bytes >> byte;)
                current->push_back(static_cast<uint8_t>(std::stoul(byte, nullptr, 16)));
        }
    }
    return examples;
}

constexpr uint8_t kPixels[] = {0xFF, 0, 0, 0, 0xFF, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};

using Sent = std::map<std::string, Bytes>;

// The host's message in an exchange that is answered so.
template <class Host>
Bytes takenFrom(ScriptedPeer& peer, const std::vector<Bytes>& answers, Host host) {
    peer.takes();
    for (const Bytes& answer : answers) peer.sends(answer);
    peer.play([&] {
        host();
        return true;
    });
    return peer.taken().back();
}

Sent hostToLoader() {
    Sent sent;
    ScriptedPeer peer;
    VORN_Image* image = peer.image();
    vorn::ImageVaAddTags(image, ITAG_Filename, VORN_Word("a.ppm"), TAG_End);
    const Bytes done = acknowledgement(), empty = emptyMessage();
    sent["load-info"] = takenFrom(peer, {done}, [&] { VORN_L_WaitForInfo(image); });
    sent["load-data"] = takenFrom(peer, {empty}, [&] { VORN_L_StartReadingImage(image); });
    sent["abort"] = takenFrom(peer, {done, done}, [&] { VORN_L_SendCMDAbort(image); });
    sent["module-command"] = takenFrom(peer, {empty, done}, [&] {
        VORN_L_TagFreeData(
            VORN_H_ModuleVaSendCommand(image, CMD_Module, ITAG_PageNumber, VORN_Word(5), TAG_End));
    });
    sent["terminate"] = takenFrom(peer, {}, [&] { VORN_L_SendCMDTerminate(image); });
    return sent;
}

Sent hostToSaver() {
    Sent sent;
    ScriptedPeer peer(VORN_SAVER);
    VORN_Image* image = peer.image();
    image->hasProcess = true;
    const VORN_Word name[] = {ITAG_Filename, VORN_Word("b.ppm"), TAG_End};
    vorn::ImageAddTags(image, VORN_LOADER, name);
    sent["save-info"] =
        takenFrom(peer, {emptyMessage(), acknowledgement()}, [&] { VORN_L_WaitForInfo(image); });
    VORN_H_ImageVaSetTags(image, ITAG_Width, VORN_Word(2), ITAG_Height, VORN_Word(2), ITAG_Channels,
                          VORN_Word(3), ITAG_ImageChannelSize, VORN_Word(1), ITAG_ColorSpace,
                          VORN_Word(VORN_CS_RGB), TAG_End);
    sent["save-data"] = takenFrom(peer, {emptyMessage()}, [&] { VORN_L_StartWritingImage(image); });

    Bytes pixels(std::begin(kPixels), std::end(kPixels));
    VORN_ChunkyBuffer lines{DF_Chunky3x8, 2, 2, 3, 1, 0, {}, {}, {}, {}};
    lines.channelPlace[0] = pixels.data();
    VORN_L_ChunkyBufferMacroSetup(&lines);
    VORN_WriteState* state = VORN_L_ImageWriteChunkyBegin(image, &lines, nullptr, 0, nullptr);
    sent["saver-block"] =
        takenFrom(peer, {}, [&] { VORN_L_ImageWriteLineChunky(state, &lines, 0); });
    VORN_L_ImageWriteChunkyEnd(state);
    return sent;
}

Sent loaderToHost() {
    Callbacks callbacks = plainLoader();
    callbacks.loaderBegin = [] {
        const FormatTag format{.format = {DF_Chunky3x8, 2, 2, 3, 1, 0, {}, {}, {}, {}}};
        VORN_M_SetVaImageInfo(ITAG_DataFormat, VORN_Word(&format), ITAG_ColorSpace,
                              VORN_Word(VORN_CS_RGB), TAG_End);
        VORN_M_SetErrorCode(2002, 7);
        return 1;
    };
    callbacks.loaderRead = [] { VORN_M_SendImageData(2, 2, 0, kPixels, sizeof kPixels); };
    Twin twin(VORN_LOADER, callbacks);
    Sent sent;
    sent["acknowledgement"] = twin.receive();
    twin.send(command(CMD_LoadInfo));
    sent["information"] = twin.receive();
    sent["acknowledgement-with-error"] = twin.receive();
    twin.send(command(CMD_LoadData));
    sent["empty-reply"] = twin.receive();
    sent["loader-block"] = twin.receive();
    twin.receive();
    twin.terminate();
    return sent;
}

Sent saverToHost() {
    Callbacks callbacks = plainSaver();
    callbacks.saverQuery = [] { VORN_M_SetVaImageInfo(ITAG_Orientation, VORN_Word(0), TAG_End); };
    callbacks.saverBegin = [] {
        VORN_M_SetErrorCode(2004, 0);
        return 0;
    };
    Twin twin(VORN_SAVER, callbacks);
    Sent sent;
    twin.receive();
    twin.send(command(CMD_SaveInfo));
    sent["saver-information"] = twin.receive();
    twin.receive();
    twin.send(command(CMD_SaveData));
    sent["error-reply"] = twin.receive();
    twin.receive();  // the empty reply
    twin.send(interrupt());
    twin.receive();
    twin.terminate();
    return sent;
}

TEST(ProtocolPage, ShowsTheBytesThatTheLibraryWrites) {
    Sent sent = hostToLoader();
    sent.merge(hostToSaver());
    sent.merge(loaderToHost());
    sent.merge(saverToHost());
    auto examples = examplesOfPage();
    for (const auto& [name, bytes] : sent) EXPECT_EQ(examples[name], bytes) << name;
    EXPECT_EQ(examples.size(), sent.size()) << "an example that nobody checks";
}

}  // namespace
