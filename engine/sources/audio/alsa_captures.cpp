#include "engine/sources/audio/alsa_captures.h"

#include <memory>
#include <string>

#include "engine/sources/audio/alsa_errors.h"

namespace engine {
namespace {

template <typename Info>
using InfoPtr = std::unique_ptr<Info, void (*)(Info*)>;

InfoPtr<snd_ctl_card_info_t> NewCardInfo() {
    snd_ctl_card_info_t* info = nullptr;
    snd_ctl_card_info_malloc(&info);
    return {info, snd_ctl_card_info_free};
}

InfoPtr<snd_pcm_info_t> NewDeviceInfo() {
    snd_pcm_info_t* info = nullptr;
    snd_pcm_info_malloc(&info);
    return {info, snd_pcm_info_free};
}

void AddCard(int number, std::vector<AlsaCapture>& captures) {
    snd_ctl_t* opened = nullptr;
    if (snd_ctl_open(&opened, ("hw:" + std::to_string(number)).c_str(), SND_CTL_NONBLOCK) < 0)
        return;
    const std::unique_ptr<snd_ctl_t, int (*)(snd_ctl_t*)> card(opened, snd_ctl_close);
    const auto card_info = NewCardInfo();
    const auto device_info = NewDeviceInfo();
    if (!card_info || !device_info || snd_ctl_card_info(card.get(), card_info.get()) < 0) return;
    int device = -1;
    while (snd_ctl_pcm_next_device(card.get(), &device) >= 0 && device >= 0) {
        snd_pcm_info_set_device(device_info.get(), static_cast<unsigned>(device));
        snd_pcm_info_set_subdevice(device_info.get(), 0);
        snd_pcm_info_set_stream(device_info.get(), SND_PCM_STREAM_CAPTURE);
        if (snd_ctl_pcm_info(card.get(), device_info.get()) < 0) continue;  // plays only
        captures.push_back(
            {snd_ctl_card_info_get_id(card_info.get()), snd_ctl_card_info_get_name(card_info.get()),
             static_cast<unsigned>(device), snd_pcm_info_get_name(device_info.get())});
    }
}

}  // namespace

std::vector<AlsaCapture> AlsaCaptures() {
    const SilentAlsaErrors silent;  // a card without captures is nothing to report
    std::vector<AlsaCapture> captures;
    int card = -1;
    while (snd_card_next(&card) >= 0 && card >= 0) AddCard(card, captures);
    return captures;
}

}  // namespace engine
