// What the spectrogram picture shows for signals whose spectra are known:
// a pure tone, a chirp, a synthetic vowel with its formants, the panes, the
// colour tables and black-and-white print; and `sonmetra --render spectrogram`
// run as a program.
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>

#include "SpectrogramFixture.h"
#include "VowelSynth.h"
#include "view/spectrogram/CSpectrogramView.h"
#include "view/spectrogram/SpectrogramData.h"
#include "view/spectrogram/SpectrogramPalette.h"
#include "view/spectrogram/SpectrogramReadoutBar.h"

namespace {

using sgtest::audioDocument;
using sgtest::sweep;

constexpr QSize kPicture(640, 420);

bool isRed(QRgb c) { return qRed(c) > 180 && qGreen(c) < 90 && qBlue(c) < 90; }
bool isGrey(QRgb c) { return std::abs(qRed(c) - qGreen(c)) <= 10 && std::abs(qGreen(c) - qBlue(c)) <= 10; }

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? 0.0 : v[v.size() / 2];
}

// The picture of the whole signal at kPicture, through a view that is never shown.
QImage pictureOf(sonmetra::CKestruneDoc& doc, bool blackWhite = false) {
    CSpectrogramView view(&doc);
    view.setShowsProgress(false);
    return view.pictureImage(kPicture, blackWhite).convertToFormat(QImage::Format_RGB32);
}

TEST(SpectrogramPicture, PureToneIsOneDarkBandAtItsFrequencysRow) {
    sgtest::Settings settings;
    auto doc = audioDocument(sweep(11025.0, 1.0, 1000.0, 1000.0), 11025.0);
    const QImage picture = pictureOf(*doc);
    const auto hz = sgtest::darkestHz(picture, settings.spectrogram());
    ASSERT_GT(hz.size(), 20u);
    for (double f : hz) EXPECT_NEAR(f, 1000.0, 60.0);

    // The loudest cell lies at the dynamic range, which is black; cells more
    // than the dynamic range below it are white, which is most of the picture.
    const SpectrogramLayout l = spectrogramLayout(kPicture, settings.spectrogram());
    int black = 0, white = 0, far = 0;
    for (int y = l.image.top(); y <= l.image.bottom(); ++y) {
        const double f = l.yToHz(y + 0.5, settings.spectrogram().frequencyRangeHz);
        for (int x = l.image.left(); x <= l.image.right(); x += 7) {
            const QRgb c = picture.pixel(x, y);
            black += c == qRgb(0, 0, 0) ? 1 : 0;
            if (std::abs(f - 1000.0) > 600.0) {
                ++far;
                white += c == qRgb(255, 255, 255) ? 1 : 0;
            }
        }
    }
    EXPECT_GT(black, 0);
    EXPECT_GT(white, far * 95 / 100);
}

TEST(SpectrogramPicture, ChirpIsALineRisingWithTime) {
    sgtest::Settings settings;
    auto doc = audioDocument(sweep(11025.0, 2.0, 300.0, 4000.0), 11025.0);
    const QImage picture = pictureOf(*doc);
    const SpectrogramLayout l = spectrogramLayout(kPicture, settings.spectrogram());
    const auto hz = sgtest::darkestHz(picture, settings.spectrogram());
    ASSERT_GT(hz.size(), 20u);
    for (std::size_t k = 0; k < hz.size(); ++k) {
        const int x = l.image.left() + 2 + 20 * static_cast<int>(k);
        const double t = (x + 0.5 - l.image.left()) / l.image.width() * 2.0;
        EXPECT_NEAR(hz[k], 300.0 + 3700.0 * t / 2.0, 150.0) << "at " << t << " s";
        if (k > 0) {
            EXPECT_GE(hz[k], hz[k - 1] - 10.0);
        }
    }
}

TEST(SpectrogramPicture, VowelFormantsAreDottedNearTheirResonances) {
    sgtest::Settings settings;
    settings.spectrogram().displayFormants = 1;
    sonmetra::synth::VowelRecipe vowel;  // /a/: 730, 1090, 2440, 3400, 4500 Hz
    vowel.seconds = 1.0;
    auto doc = audioDocument(sonmetra::synth::synthesizeVowel(vowel), vowel.rateHz);
    CSpectrogramView view(doc.get());
    view.setShowsProgress(false);
    view.resize(kPicture + QSize(0, view.readoutBar()->sizeHint().height()));
    ASSERT_TRUE(view.recompute());
    const SpectrogramData& data = *view.data();
    ASSERT_TRUE(data.formantsTracked);

    std::array<std::vector<double>, 3> tracks;
    for (int i = data.columns() / 10; i < data.columns() * 9 / 10; ++i)
        for (std::size_t k = 0; k < 3; ++k) tracks[k].push_back(data.formantsAt(i)[k]);
    EXPECT_NEAR(median(tracks[0]), 730.0, 80.0);
    EXPECT_NEAR(median(tracks[1]), 1090.0, 120.0);
    EXPECT_NEAR(median(tracks[2]), 2440.0, 200.0);

    // The dots of F1 stand on its row in most columns of the picture.
    const QImage picture = view.pictureImage(view.pictureRect().size()).convertToFormat(QImage::Format_RGB32);
    const SpectrogramLayout l = spectrogramLayout(picture.size(), data.settings);
    const int row = static_cast<int>(l.hzToY(median(tracks[0]), data.settings.frequencyRangeHz));
    int columns = 0, dotted = 0;
    for (int x = l.image.left() + l.image.width() / 10; x < l.image.left() + l.image.width() * 9 / 10; ++x) {
        ++columns;
        for (int y = row - 5; y <= row + 5; ++y)
            if (isRed(picture.pixel(x, y))) {
                ++dotted;
                break;
            }
    }
    EXPECT_GT(dotted, columns * 3 / 4);

    // Black and white: no colour anywhere, the dots drawn white on the dark band.
    const QImage print = view.pictureImage(view.pictureRect().size(), true).convertToFormat(QImage::Format_RGB32);
    int coloured = 0, whiteOnBand = 0;
    for (int y = 0; y < print.height(); ++y)
        for (int x = 0; x < print.width(); ++x) coloured += isGrey(print.pixel(x, y)) ? 0 : 1;
    for (int x = l.image.left() + 10; x < l.image.right() - 10; ++x)
        whiteOnBand += qRed(print.pixel(x, row)) > 200 ? 1 : 0;
    EXPECT_EQ(coloured, 0);
    EXPECT_GT(whiteOnBand, l.image.width() / 2);
}

TEST(SpectrogramPicture, PanesShareTheTimeAxis) {
    sgtest::Settings settings;
    auto& s = settings.spectrogram();
    s.drawWaveform = s.drawIntensity = s.drawLabels = 1;
    // Silence, then a tone from 500 ms on, labelled there.
    auto samples = sweep(11025.0, 1.0, 800.0, 800.0);
    std::fill(samples.begin(), samples.begin() + 11025 / 2, 0);
    auto doc = audioDocument(samples, 11025.0);
    sonmetra::CLabel label;
    label.timeMs = 500.0;
    label.text = "tone";
    doc->channel(0).m_labels.push_back(label);
    const QImage picture = pictureOf(*doc);
    const SpectrogramLayout l = spectrogramLayout(kPicture, s);
    ASSERT_FALSE(l.wavePane.isEmpty());
    ASSERT_FALSE(l.intensityPane.isEmpty());
    ASSERT_FALSE(l.labelPane.isEmpty());
    const int half = l.image.left() + l.image.width() / 2;
    auto darkIn = [&](const QRect& r, int x0, int x1) {
        int n = 0;
        for (int x = x0; x < x1; ++x)
            for (int y = r.top() + 1; y < r.bottom(); ++y) n += qRed(picture.pixel(x, y)) < 128 ? 1 : 0;
        return n;
    };
    // The waveform swings only in the tone's half; the intensity curve (blue)
    // lies low before it and high after; the label's line stands at 500 ms.
    const int halfWidth = half - 4 - (l.image.left() + 4);
    EXPECT_LE(darkIn(l.wavePane, l.image.left() + 4, half - 4), 3 * halfWidth);
    EXPECT_GT(darkIn(l.wavePane, half + 4, l.image.right() - 4), 10 * halfWidth);
    auto blueRow = [&](int x) {
        for (int y = l.intensityPane.top(); y <= l.intensityPane.bottom(); ++y) {
            const QRgb c = picture.pixel(x, y);
            if (qBlue(c) > 200 && qRed(c) < 100) return y;
        }
        return -1;
    };
    const int quiet = blueRow(l.image.left() + l.image.width() / 4);
    const int loud = blueRow(l.image.left() + l.image.width() * 3 / 4);
    ASSERT_GE(quiet, 0);
    ASSERT_GE(loud, 0);
    EXPECT_GT(quiet, loud);
    EXPECT_GT(darkIn(l.labelPane, half - 1, half + 2), l.labelPane.height() / 2);
}

TEST(SpectrogramPicture, TablesRunFromQuietToLoudInEvenLightness) {
    const PaletteTable& grey = greyPalette();
    EXPECT_EQ(grey.front(), qRgb(255, 255, 255));
    EXPECT_EQ(grey.back(), qRgb(0, 0, 0));
    const PaletteTable& colour = colourPalette();
    const double first = cieLightness(colour.front()), last = cieLightness(colour.back());
    EXPECT_LT(first, 25.0);
    EXPECT_GT(last, 85.0);
    // Equal level steps give equal lightness steps, within the rounding to 8 bits.
    const double even = (last - first) / 255.0;
    for (std::size_t i = 1; i < colour.size(); ++i) {
        const double step = cieLightness(colour[i]) - cieLightness(colour[i - 1]);
        EXPECT_NEAR(step, even, 0.35) << "entry " << i;
    }
    // Not a grey ramp in disguise: the middle of the table has colour.
    const QRgb mid = colour[128];
    EXPECT_GT(std::max({qRed(mid), qGreen(mid), qBlue(mid)}) - std::min({qRed(mid), qGreen(mid), qBlue(mid)}), 40);

    sgtest::Settings settings;
    settings.spectrogram().colourMap = 1;
    auto doc = audioDocument(sweep(11025.0, 1.0, 1000.0, 1000.0), 11025.0);
    const QImage picture = pictureOf(*doc);
    const SpectrogramLayout l = spectrogramLayout(kPicture, settings.spectrogram());
    // The loudest cell takes the table's last entry, and the quiet far rows its first.
    int loudest = 0, quietest = 0;
    for (int y = l.image.top(); y <= l.image.bottom(); ++y)
        for (int x = l.image.left(); x <= l.image.right(); ++x) {
            loudest += picture.pixel(x, y) == (colour.back() | 0xff000000u) ? 1 : 0;
            quietest += picture.pixel(x, y) == (colour.front() | 0xff000000u) ? 1 : 0;
        }
    EXPECT_GT(loudest, 0);
    EXPECT_GT(quietest, l.image.width() * l.image.height() / 2);
}

TEST(SpectrogramCells, FollowTheImageAreaWithinTheSamplesAndTheCap) {
    const CellCounts screen = cellCountsFor(QSize(1842, 1017), 3600.0 * 44100.0);
    EXPECT_EQ(screen.columns, 1842);
    EXPECT_EQ(screen.points, 1017);
    // A short stretch: one column per sample at most.
    EXPECT_EQ(cellCountsFor(QSize(800, 600), 100.0).columns, 100);
    // A poster: fewer cells in the same proportions.
    const CellCounts poster = cellCountsFor(QSize(16000, 8000), 1e9);
    EXPECT_LE(double(poster.columns) * poster.points, kMaxCells);
    EXPECT_GT(double(poster.columns) * poster.points, kMaxCells * 0.99);
    EXPECT_NEAR(double(poster.columns) / poster.points, 2.0, 0.01);
    EXPECT_EQ(cellCountsFor(QSize(0, 600), 1e6).columns, 0);
}

sonmetra::test::ProgramRun render(const QTemporaryDir& home, const QStringList& arguments) {
    return sonmetra::test::runProgram(SONMETRA_BIN, QStringList{"--render", "spectrogram"} + arguments, home);
}

TEST(SpectrogramRender, ProgramDrawsTheToneAndTheCursor) {
    QTemporaryDir home;
    const QString wav = home.filePath("tone.wav");
    ASSERT_TRUE(sonmetra::synth::writeWav(wav.toStdString(), sweep(11025.0, 1.0, 1000.0, 1000.0), 11025.0));
    const QString png = home.filePath("tone.png");
    const auto run = render(home, {wav, "-o", png, "--size", "640x420", "--cursor", "500"});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    const QImage picture = QImage(png).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(picture.size(), kPicture);
    // A fresh configuration: the built-in settings, grids included.
    const sonmetra::SpectrogramSettings builtIn;
    const SpectrogramLayout l = spectrogramLayout(kPicture, builtIn);
    int nearTone = 0;
    const auto hz = sgtest::darkestHz(picture, builtIn, 23);
    for (double f : hz) nearTone += std::abs(f - 1000.0) < 60.0 ? 1 : 0;
    EXPECT_GT(nearTone, static_cast<int>(hz.size()) * 9 / 10);
    const int x = static_cast<int>(l.msToX(500.0, 0.0, 1000.0));
    bool cursor = false;
    for (int dx = -1; dx <= 1; ++dx) cursor = cursor || isRed(picture.pixel(x + dx, l.image.top() + 5));
    EXPECT_TRUE(cursor);

    const QString bmp = home.filePath("tone.bmp"), pdf = home.filePath("tone.pdf");
    EXPECT_EQ(render(home, {wav, "-o", bmp, "--from", "200", "--to", "700"}).exitCode, 0);
    EXPECT_EQ(QImage(bmp, "BMP").size(), QSize(800, 600));
    EXPECT_EQ(render(home, {wav, "-o", pdf}).exitCode, 0);
    QFile page(pdf);
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    EXPECT_EQ(page.read(4), QByteArray("%PDF"));
}

}  // namespace
