// The built-in texts, by index. '_' and "%s" in them are for the caller to deal with.
#include <iterator>

#include "wexelxi/preferences.h"

// clang-format off
const char *const gDefaultStrings[] = {
    // 0 to 13: dialog words
    "Yes", "No", "OK", "Cancel", "Abort", "Retry", "Ignore", "Open", "Save As", "File:", "Files",
    "List files of type:", "Directories", "All files",
    // 14 to 20: messages
    "%s_This file does not exist__Create the file?",
    "%s_File not found._Please verify the correct file name was given.",
    "%s already exists._Do you want to replace it?",
    "%s_Path does not exist._Please verify the correct path was given.",
    "Unsupported Color Depth._Please increase X-Server color depth to more than 8 bits/256 colors.",
    "Initializing Wexel font cache - please wait.", "Unable to initialize Xft library",
    // 21: the default tray
    "Default Tray",
    // 22 to 91: paper names
    "A4", "Letter", "Tabloid", "Ledger", "Legal", "Statement", "Executive", "A3", "A5", "B4",
    "B5", "Folio", "Quarto", "10 by 14 inch", "11 by 17 inch", "Note", "#9 Envelope",
    "#10 Envelope", "#11 Envelope", "#12 Envelope", "#14 Envelope", "C Sheet", "D Sheet",
    "E Sheet", "DL Envelope", "C5 Envelope", "C3 Envelope", "C4 Envelope", "C6 Envelope",
    "C65 Envelope", "B4 Envelope", "B5 Envelope", "B6 Envelope", "Italy Envelope",
    "Monarch Envelope", "6 3/4 Envelope", "US Std Fanfold", "German Std Fanfold",
    "German Legal Fanfold", "B4 (ISO)", "Japanese Postcard", "9 by 11 inch", "10 by 11 inch",
    "15 by 11 inch", "Envelope Invite", "Letter extra", "Legal Extra", "Tabloid Extra",
    "A4 Extra", "Letter Transverse", "A4 Transverse", "Letter Extra Transverse", "SuperA/A4",
    "SuperB/A3", "8.5 by 12.69 inch", "A4 Plus", "A5 Transverse", "B5 (JIS) Transverse",
    "A3 Extra", "A5 Extra", "B5 (ISO) Extra", "A2", "A3 Transverse", "Extra Transverse",
    "Unknown", "A6", "DL Envelope Rotated", "A4 Long", "Organizer J", "Organizer K",
    // 92 to 134: words of the print and file dialogs
    "Save", "already exists. Do you want to replace it?",
    "is locked or in use and cannot be deleted", "Error", "Open File", "Save File",
    "Select Directory", "Print Setup", "Name", "Type", "Size", "Tray", "Portrait", "Landscape",
    "Properties...", "Printer", "Paper", "Orientation", "Properties", "Device", "Duplex",
    "Scale (%)", "Option", "Value", "Copies", "Number of copies", "All", "Pages",
    "Enter page numbers or ranges separated by commas. Example 1-3,5", "Job Setup", "None",
    "Short edge", "Long edge", "Classified", "Confidential", "Secret", "Standard", "Top secret",
    "Unclassified", "Before", "After", "Banners", "Restore defaults",
};
// clang-format on
static_assert(std::size(gDefaultStrings) == 135);
