// The program's message texts, keyed by string number (61440 on).
// Every fixed text that a message box shows lives here, so that the
// GUI, the command-line tool and the tests all show the same letters.
#pragma once

namespace sonmetra {

enum StringId : int {
    // Numbers fixed by the resource table of the original string set.
    IDS_NO_MEMORY = 61453,
    IDS_VIEW_INIT_FAILED = 61459,
    IDS_PASTE_CHANNEL_COUNT = 61472,
    IDS_PASTE_SAMPLE_RATE = 61473,
    IDS_LABEL_DRAW_FAILED = 61475,
    IDS_UNDO_UNAVAILABLE_CONTINUE = 61493,
    IDS_VERSION = 61497,

    // Document and files.
    IDS_WRONG_FILE_TYPE = 61600,
    IDS_WRONG_CHANNEL_NUMBER,
    IDS_INCORRECT_DATA_COUNT,
    IDS_SAVE_ERROR,
    IDS_CHANNEL_COPY_ERROR,
    IDS_SAVE_CHANGES_Q,  // "Save Changes to '%s' before closing ?"
    IDS_ZERO_LENGTH_FILE,
    IDS_GENERIC_READ_ERROR,
    IDS_NOT_PURE_ASCII,

    // Start-up and help.
    IDS_FONT_ERROR = 61650,
    IDS_REGISTRY_ERROR,
    IDS_NO_HELP_FILE,

    // Editing and undo.
    IDS_TEMP_SAVE_ERROR = 61700,
    IDS_TEMP_READ_ERROR,
    IDS_WRONG_TEMP_FILE,

    // Recording and playback.
    IDS_MIC_OPEN_ERROR = 61750,
    IDS_SAMPLING_TIME_MISMATCH,
    IDS_SAVE_BEFORE_RECORDING_Q,  // "Save '%s' before recording ?"
    IDS_RECORDING_BANNER,

    // Sound input and output engines.
    IDS_NO_SOUND_DEVICE = 61760,
    IDS_WAVEIN_CAPS_FAILED,
    IDS_WAVEIN_OPEN_FAILED,
    IDS_WAVEIN_PREPARE_OPEN_FAILED,
    IDS_WAVEIN_ADD_OPEN_FAILED,
    IDS_WAVEIN_START_OPEN_FAILED,
    IDS_WAVEIN_UNPREPARE_FAILED,
    IDS_WAVEIN_PREPARE_FAILED,
    IDS_WAVEIN_ADD_FAILED,
    IDS_WAVEIN_START_FAILED,
    IDS_NO_SOUND_OUTPUT_DEVICE,
    IDS_WAVEOUT_NO_MEMORY,
    IDS_WAVEOUT_CAPS_FAILED,
    IDS_WAVEOUT_OPEN_FAILED,
    IDS_WAVEOUT_PREPARE_PLAY_FAILED,
    IDS_WAVEOUT_WRITE_PLAY_FAILED,
    IDS_WAVEOUT_UNPREPARE_FAILED,
    IDS_WAVEOUT_PREPARE_FAILED,
    IDS_WAVEOUT_ADD_FAILED,

    // Measurement log and grids.
    IDS_FILE_OPEN_ERROR = 61800,
    IDS_INVALID_LOG_FILE,
    IDS_DATA_TABLE_ERROR,
    IDS_SAVE_LOG_Q,  // "Save log file--%s--, before closing."

    // Editing, labels and the measurement log: texts the program adds.
    IDS_CUT_WHOLE_SIGNAL = 61720,
    IDS_LOG_WRITE_ERROR,

    // Waveform view: bitmaps, screen dump, display settings.
    IDS_BITMAP_WRITE_ERROR = 61850,  // "%s": the path
    IDS_SCREEN_CAPTURE_ERROR,
    IDS_CONFIG_WRITE_ERROR,  // "%s": the path

    // Sound file import.
    IDS_SAMPLES_CLIPPED = 61900,  // "%s samples ... clipped": count of samples beyond 16-bit full scale

    // External USB acquisition unit.
    IDS_USB_OPEN_ERROR = 61950,
    IDS_USB_REQUEST_FAILED,
    IDS_USB_READ_ERROR,  // also what a failed bulk write reports
    IDS_UNKNOWN_MULTIPLEX_TYPE,
    IDS_WRONG_INPUT_SOURCE,
    IDS_SAMPLE_ROUTINE_FAILED,
    IDS_USB_PLAY_RATE,  // "%s": the rate in Hz

    // Save dialogs.
    IDS_REPLACE_FILE_Q = 62100,  // "%s": the path that the chosen file type gave the name

    // FFT/LPC spectrum window and its option dialog.
    IDS_FFT_NO_AUDIO_CHANNEL = 62200,
    IDS_FFT_APPLIED_WINDOW_RANGE,
    IDS_FFT_FREQUENCY_RANGE,
};

// The text of a string number; an unknown number gives an empty text.
const char* loadString(int id);

}  // namespace sonmetra
