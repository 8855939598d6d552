// The catalogue of tag names.
#include <vorn/library.h>

#include <cinttypes>
#include <cstdio>

namespace vorn {
namespace {

struct TagName {
    uint32_t id;
    char name[28];  // padded with blanks to 26, so that printed names line up
};

// In the order of lookup.
constexpr TagName kTagNames[] = {
    {TAG_End, "TAG_End                   "},
    {TAG_Goto, "TAG_Goto                  "},
    {TAG_Taglist, "TAG_Taglist               "},
    {TAG_SkipTag, "TAG_SkipTag               "},
    {MTAG_NumModules, "MTAG_NumModules           "},
    {MTAG_NumUNUSED1, "MTAG_NumUNUSED1           "},
    {MTAG_NumUNUSED2, "MTAG_NumUNUSED2           "},
    {MTAG_NumUNUSED3, "MTAG_NumUNUSED3           "},
    {MTAG_Terminate, "MTAG_Terminate            "},
    {MTAG_ErrorCode, "MTAG_ErrorCode            "},
    {MTAG_ModuleType, "MTAG_ModuleType           "},
    {MTAG_Command, "MTAG_Command              "},
    {MTAG_Ack, "MTAG_Ack                  "},
    {ITAG_ReadLineNo, "ITAG_ReadLineNo           "},
    {ITAG_ReadWidth, "ITAG_ReadWidth            "},
    {ITAG_ReadHeight, "ITAG_ReadHeight           "},
    {TAG_SIIStatus, "TAG_SIIStatus             "},
    {ITAG_Input, "ITAG_Input                "},
    {ITAG_Output, "ITAG_Output               "},
    {ITAG_Width, "ITAG_Width                "},
    {ITAG_Height, "ITAG_Height               "},
    {ITAG_Channels, "ITAG_Channels             "},
    {ITAG_ImageChannelSize, "ITAG_ImageChannelSize     "},
    {ITAG_ImageChannels, "ITAG_ImageChannels        "},
    {ITAG_Alpha, "ITAG_Alpha                "},
    {ITAG_Orientation, "ITAG_Orientation          "},
    {ITAG_XAspect, "ITAG_XAspect              "},
    {ITAG_YAspect, "ITAG_YAspect              "},
    {ITAG_XDPI, "ITAG_XDPI                 "},
    {ITAG_YDPI, "ITAG_YDPI                 "},
    {ITAG_ColorSpace, "ITAG_ColorSpace           "},
    {ITAG_PageNumber, "ITAG_PageNumber           "},
    {ITAG_MeterTicks, "ITAG_MeterTicks           "},
    {ITAG_MeterCallbackUserData, "ITAG_MeterCallbackUserData"},
    {ITAG_AbortCallbackUserData, "ITAG_AbortCallbackUserData"},
    {XTAG_Void, "XTAG_Void                 "},
    {ITAG_Filename, "ITAG_Filename             "},
    {MTAG_ModuleName, "MTAG_ModuleName           "},
    {ITAG_Artist, "ITAG_Artist               "},
    {ITAG_DateTime, "ITAG_DateTime             "},
    {ITAG_HostComputer, "ITAG_HostComputer         "},
    {ITAG_Description, "ITAG_Description          "},
    {ITAG_Make, "ITAG_Make                 "},
    {ITAG_Model, "ITAG_Model                "},
    {ITAG_Software, "ITAG_Software             "},
    {ITAG_DocumentName, "ITAG_DocumentName         "},
    {ITAG_PageName, "ITAG_PageName             "},
    {ITAG_Data, "ITAG_Data                 "},
    {ITAG_DataFormat, "ITAG_DataFormat           "},
    {MTAG_ModuleList, "MTAG_ModuleList           "},
    {MTAG_ListUNUSED1, "MTAG_ListUNUSED1          "},
    {MTAG_ListUNUSED2, "MTAG_ListUNUSED2          "},
    {MTAG_ListUNUSED3, "MTAG_ListUNUSED3          "},
    {ITAG_MeterCallback, "ITAG_MeterCallback        "},
    {ITAG_AbortCallback, "ITAG_AbortCallback        "},
};

}  // namespace
}  // namespace vorn

const char* VORN_L_gettagid(uint32_t id) {
    for (const vorn::TagName& entry : vorn::kTagNames) {
        if (entry.id == id) {
            return entry.name;
        }
    }
    // One buffer for all callers, as the interface says.
    static char unknown[24];
    std::snprintf(unknown, sizeof unknown, "ID(x%08" PRIx32 ") ", id);
    return unknown;
}
