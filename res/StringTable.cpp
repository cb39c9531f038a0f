#include "StringTable.h"

#include <algorithm>
#include <iterator>

namespace sonmetra {
namespace {

struct Entry {
    int id;
    const char* text;
};

// Texts are reproduced letter for letter, blanks and spelling included.
constexpr Entry kStrings[] = {
    {IDS_NO_MEMORY, "Could not allocate enough memory for this operation."},
    {IDS_VIEW_INIT_FAILED, "Error in initilization of view."},
    {IDS_PASTE_CHANNEL_COUNT, "Pasting of files with different number of channels is not allowed."},
    {IDS_PASTE_SAMPLE_RATE, "Pasting files with different sample rates for channels is not allowed."},
    {IDS_LABEL_DRAW_FAILED, "Error in drawing the labels."},
    {IDS_UNDO_UNAVAILABLE_CONTINUE,
     "Cannot perform the undo for the requested editing operation.\nDo you wish to continue with the editing "
     "operation?"},
    {IDS_VERSION, "Version 8.9.1"},

    {IDS_WRONG_FILE_TYPE, "Wrong file type."},
    {IDS_WRONG_CHANNEL_NUMBER, "Wrong channel number.\nEither is zero or is more than 20."},
    {IDS_INCORRECT_DATA_COUNT, "Incorrect number of data was read"},
    {IDS_SAVE_ERROR, "Error in save operation."},
    {IDS_CHANNEL_COPY_ERROR, "Error in '=' operator in CChannel class."},
    {IDS_SAVE_CHANGES_Q, "Save Changes to '%s' before closing ?"},
    {IDS_ZERO_LENGTH_FILE, "The file has zero length."},
    {IDS_GENERIC_READ_ERROR, "Error in reading the generic file."},
    {IDS_NOT_PURE_ASCII,
     "The file is not a pure ascii file. Make sure that this file does not contain and header and does not have "
     "any formatting."},

    {IDS_FONT_ERROR, "Error in creating fonts"},
    {IDS_REGISTRY_ERROR,
     "Unable to update the system registry.\nPlease contact your system administrator and/or the vender."},
    {IDS_NO_HELP_FILE, "No help file was found. Please contact the vendor."},

    {IDS_TEMP_SAVE_ERROR, "Error in saving the temp file"},
    {IDS_TEMP_READ_ERROR, "Error in reading the temp file"},
    {IDS_WRONG_TEMP_FILE, "Wrong temp file type"},

    {IDS_MIC_OPEN_ERROR, "Error in opening the Mic.\nRecording will stop."},
    {IDS_SAMPLING_TIME_MISMATCH,
     "Error occured during sampling process.\nThe requested and recorded times are not the same.\nPlease RE-SELECT "
     "the audio sample rate and check the recording time in the \nOptions->Record/Play and try again.\nThis data is "
     "not valid."},
    {IDS_SAVE_BEFORE_RECORDING_Q, "Save '%s' before recording ?"},
    {IDS_RECORDING_BANNER, "Recording...   press mouse to stop"},

    {IDS_NO_SOUND_DEVICE, "No Sound Device"},
    {IDS_WAVEIN_CAPS_FAILED, "Cannot determine sound card capabilities !"},
    {IDS_WAVEIN_OPEN_FAILED, "Cannot Open Sound Input Device!"},
    {IDS_WAVEIN_PREPARE_OPEN_FAILED, "Cannot Prepare Header (Open Mic)!"},
    {IDS_WAVEIN_ADD_OPEN_FAILED, "Cannot Add Buffer (Open Mic)!"},
    {IDS_WAVEIN_START_OPEN_FAILED, "Cannot Start Wave In (Open Mic)!"},
    {IDS_WAVEIN_UNPREPARE_FAILED, "Cannot UnPrepareHeader !"},
    {IDS_WAVEIN_PREPARE_FAILED, "Cannot Prepare Header !"},
    {IDS_WAVEIN_ADD_FAILED, "Cannot Add Buffer (Add Buffer)!"},
    {IDS_WAVEIN_START_FAILED, "Cannot Start Wave In (Add Buffer)!"},
    {IDS_NO_SOUND_OUTPUT_DEVICE, "No Sound Output Device"},
    {IDS_WAVEOUT_NO_MEMORY, "error in memory"},
    {IDS_WAVEOUT_CAPS_FAILED, "Sound output Cannot determine card capabilities !"},
    {IDS_WAVEOUT_OPEN_FAILED, "Sound output Cannot Open Device!"},
    {IDS_WAVEOUT_PREPARE_PLAY_FAILED, " Sound Output Cannot Prepare Header !"},
    {IDS_WAVEOUT_WRITE_PLAY_FAILED, " Sound Output Cannot Write Buffer !"},
    {IDS_WAVEOUT_UNPREPARE_FAILED, "Sound output Cannot UnPrepareHeader !"},
    {IDS_WAVEOUT_PREPARE_FAILED, "Sound output Cannot Prepare Header !"},
    {IDS_WAVEOUT_ADD_FAILED, "Sound output Cannot Add Buffer !"},

    {IDS_FILE_OPEN_ERROR, "Error in opening the file."},
    {IDS_INVALID_LOG_FILE, "This is not a valid log file."},
    {IDS_DATA_TABLE_ERROR, "Error in setting up the data table"},
    {IDS_SAVE_LOG_Q, "Save log file--%s--, before closing."},

    {IDS_CUT_WHOLE_SIGNAL, "The whole signal cannot be cut: every channel must keep at least one sample."},
    {IDS_LOG_WRITE_ERROR, "Error in writing the log file."},

    {IDS_BITMAP_WRITE_ERROR, "The bitmap could not be written to '%s'."},
    {IDS_SCREEN_CAPTURE_ERROR, "The screen could not be captured."},
    {IDS_CONFIG_WRITE_ERROR,
     "The settings could not be written to the configuration file '%s'.\nThey stay in force until the program ends."},

    {IDS_SAMPLES_CLIPPED, "%s samples were beyond 16-bit full scale and have been clipped."},

    {IDS_USB_OPEN_ERROR,
     "Error in opening the requested USB device.\nPlease unplug the device, wait a few seconds and replug the device."},
    {IDS_USB_REQUEST_FAILED, "Request send command failed."},
    {IDS_USB_READ_ERROR, "Error in reading the incoming data."},
    {IDS_UNKNOWN_MULTIPLEX_TYPE, "Unknown multiplex type."},
    {IDS_WRONG_INPUT_SOURCE,
     "Wrong input source.\nPlease refer to the Record/Play window to select a proper\ninput source."},
    {IDS_SAMPLE_ROUTINE_FAILED, "Sample routine failed."},
    {IDS_USB_PLAY_RATE, "The sample rate of %s Hz cannot be played through the unit."},
    {IDS_REPLACE_FILE_Q, "'%s' already exists.\nDo you want to replace it?"},

    {IDS_FFT_NO_AUDIO_CHANNEL,
     "This document has no audio channel.\nThe FFT/LPC spectrum is computed on the audio channel only."},
    {IDS_FFT_APPLIED_WINDOW_RANGE, "Selected applied window is out of range.\nIt will be adjusted to maximum."},
    {IDS_FFT_FREQUENCY_RANGE, "Selected display frequency is out of range.\nIt will be adjusted to maximum. "},
};

}  // namespace

const char* loadString(int id) {
    const auto it = std::find_if(std::begin(kStrings), std::end(kStrings), [id](const Entry& e) { return e.id == id; });
    return it == std::end(kStrings) ? "" : it->text;
}

}  // namespace sonmetra
