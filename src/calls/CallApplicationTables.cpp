#include "calls/CallApplicationTables.h"

#include <algorithm>

namespace vardel::CallApplicationTables {

namespace {

std::set<std::string, std::less<>> makeExcludedApplications()
{
    std::set<std::string, std::less<>> excluded = {
        "com.apple.Spotlight",
        "com.apple.quicklook.QuickLookUIService",
        "com.macility.typinator2",
        "com.guidedways.TodoMac",
        "com.guidedways.TodoMac-setapp",
        "com.apple.dt.Xcode",
        "com.apple.preference.sound.remoteservice",
        "com.apple.preference.security.remoteservice",
        "WSG985FR47.net.telestream.screenflowhelper",
        "net.telestream.screenflowhelper",
        "com.electron.ava.helper",
        "com.stack.io.helper",
        "com.apple.MobileSMS",
        "com.macpaw.CleanMyMac",
        "com.macpaw.CleanMyMac-setapp",
        "com.smileonmymac.textexpander",
        "com.stairways.keyboardmaestro.engine",
        "com.loom.desktop.helper",
        "com.apple.loginwindow",
        "tw.ogdesign.eagle.helper",
        "com.runningwithcrayons.Alfred",
        "com.setapp.DesktopClient",
        "com.parallels.vm",
        "com.apple.Virtualization.VirtualMachine",
        "EKT6323JY3.com.guidedways.TodoMac.Helper",
        "com.descript.beachcube.helper",
        "com.bensoftware.SecuritySpy",
        "com.memoryvault.MemoryVault",
        "ai.limitless.desktop",
        "com.apple.controlcenter",
        "com.pilotmoon.DwellClick",
        "com.henrikruscon.Klack",
        "com.apple.Sound-Settings.extension",
        "com.atebits.Tweetie2",
        "com.3bitlab.AntiSleep",
        "Cisco-Systems.SparkHelper",
        "com.superduper.superwhisper",
        "com.superduper.superwhisper-setapp",
        "app.intellibar.macos",
        "com.electron.wispr-flow.helper",
        "com.readdle.SparkDesktop",
        "com.readdle.SparkDesktop-setapp",
        "com.goodsnooze.MacWhisper",
        "com.apple.VoiceMemos",
        "com.electron.aqua-voice",
        "com.electron.aqua-voice.helper",
        "com.todesktop.230313mzl4w4u92",
        "com.apple.QuickTimePlayerX",
        "com.colliderli.iina",
        "org.videolan.vlc",
        "com.apple.Music",
        "com.apple.iTunes",
        "com.spotify.client",
        "com.tidal.desktop.player",
        "com.anghami.anghami.helper",
        "com.bearisdriving.BGM.App",
        "com.movist.movist-setapp",
        "com.eltima.elmedia-setapp",
        "pl.growapps.Silenz-setapp",
        "pl.growapps.Silenz",
        "com.blizzard.starcraft2",
        "com.epicgames.EpicWebHelper",
        "com.nvidia.gfnpc.mall",
        "com.globaldelight.Boom3D",
        "com.globaldelight.Boom3DMAS",
        "com.globaldelight.Boom3D-setapp",
        "com.globaldelight.Boom2MAS",
        "com.globaldelight.Boom2",
        "ai.krisp.krispMac",
        "com.rogueamoeba.audiohijack3",
        "com.rogueamoeba.Airfoil",
        "com.rogueamoeba.arkaudiod",
        "com.reincubate.macos.cam",
        "com.elgato.WaveLink",
        "com.staticz.SoundControl",
        "com.roon.Roon",
        "com.apple.logic10",
        "com.ableton.live",
        "com.uaudio.luna",
        "com.cockos.reaper",
        "com.izotope.RX8",
        "com.apple.garageband10",
        "com.apple.mainstage3",
        "com.adobe.Audition",
        "com.apple.FinalCut",
        "com.apple.FinalCutTrial",
        "com.apple.iMovieApp",
        "com.avid.ProTools",
        "com.adobe.AfterEffects",
        "com.DSP-Q.DSP-Quattro",
        "net.sourceforge.supercollider",
        "com.twistedwave.TwistedWave",
        "com.cycling74.Max",
        "com.celemony.melodyne.standalone",
        "com.ocenaudio",
        "com.thecargocult.envyeditor",
        "org.audacityteam.audacity",
        "com.image-line.flstudio",
        "com.arobas-music.guitarpro6",
        "com.arobas-music.guitarpro7",
        "com.arobas-music.guitarpro8",
        "com.adobe.illustrator",
        "com.serato.seratodj",
        "com.native-instruments.Maschine",
        "com.native-instruments.Maschine 2",
        "com.imaginando.vs",
        "com.blackmagic-design.DaVinciResolve",
        "com.native-instruments.Traktor",
        "com.plugdata.plugdata",
        "com.pomfort.ReeltimePro",
        "WSG985FR47.net.telestream.screenflowhelper",
        "com.shinywhitebox.iShowU6",
        "com.shinywhitebox.iShowU-Instant",
        "com.shinywhitebox.iShowU-Studio-2",
        "com.shinywhitebox.SWBAudioApp",
        "com.obsproject.obs-studio",
        "com.timpler.screenstudio.helper",
        "com.getcleanshot.app-setapp",
        "com.loom.desktop",
        "app.mmhmm.hybrid.helper",
        "com.vpltd.FlatOut2as",
        "Project Zomboid",
        "org.ultrastardeluxe.ultrastardeluxe",
    };
    auto addNumbered = [&excluded](const std::string& prefix, int first, int last) {
        for (int number = first; number <= last; ++number)
            excluded.insert(prefix + std::to_string(number));
    };
    addNumbered("com.ikmultimedia.AmpliTube", 4, 8);
    addNumbered("net.telestream.screenflow", 9, 15);
    addNumbered("com.adobe.PremierePro.", 10, 30);
    addNumbered("com.adobe.PremiereProBeta.", 10, 30);
    addNumbered("com.adobe.ame.application.", 10, 30);
    addNumbered("com.techsmith.camtasia", 2018, 2030);
    addNumbered("com.techsmith.snagit.capturehelper", 2018, 2030);
    addNumbered("com.makemusic.Finale", 20, 30);
    return excluded;
}

} // namespace

const KnownCallApplications& builtInKnownCallApplications()
{
    static const KnownCallApplications table = {
        { "us.zoom.xos", "Zoom" },
        { "com.microsoft.teams", "Teams" },
        { "com.microsoft.teams.helper", "Teams" },
        { "com.tinyspeck.slackmacgap", "Slack" },
        { "Jabber", "Jabber" },
        { "jabber", "Jabber" },
        { "com.webex.meetingmanager", "Webex" },
        { "Cisco-Systems.Spark", "Webex" },
        { "im.riot.app", "Element" },
        { "com.logmein.GoToMeeting", "GoToMeeting" },
        { "com.bluejeansnet.Blue", "BlueJeans" },
        { "com.alibaba.DingTalkMac", "DingTalk" },
        { "com.tencent.meeting", "TencentMeeting" },
        { "ru.keepcoder.Telegram", "Telegram" },
        { "com.tdesktop.Telegram", "Telegram" },
        { "com.hnc.Discord", "Discord" },
        { "WhatsApp", "WhatsApp" },
        { "jp.naver.line.mac", "LINE" },
        { "com.tencent.xinWeChat", "WeChat" },
        { "com.ringcentral.glip", "RingCentral" },
        { "com.ringcentral.ringcentralformac", "RingCentral" },
        { "com.gather.Gather", "Gather" },
        { "com.amazon.Amazon-Chime.helper", "Amazon Chime" },
    };
    return table;
}

KnownCallApplications withExtraRows(KnownCallApplications table, const std::vector<std::string>& extraRows)
{
    for (const std::string& row : extraRows) {
        if (std::count(row.begin(), row.end(), ':') != 1)
            continue;
        auto separator = row.find(':');
        std::string fragment = row.substr(0, separator);
        std::string serviceName = row.substr(separator + 1);
        auto existing
            = std::find_if(table.begin(), table.end(), [&](const auto& entry) { return entry.first == fragment; });
        if (existing != table.end())
            existing->second = serviceName;
        else
            table.emplace_back(fragment, serviceName);
    }
    return table;
}

const std::set<std::string, std::less<>>& callTrackingExcludedApplications()
{
    static const std::set<std::string, std::less<>> excluded = makeExcludedApplications();
    return excluded;
}

} // namespace vardel::CallApplicationTables
