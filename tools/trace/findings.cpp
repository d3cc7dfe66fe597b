#include "tools/trace/findings.h"

#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include "tools/trace/line.h"
#include "tools/trace/settings.h"

namespace trace {
namespace {

// Module, symbol and offset of a place, as "host(OpenPort+0x1c)[+0x13a4]"; the last is the offset
// in the module, for addr2line.
void AddPlace(Line &line, const void *caller)
{
    Dl_info info;
    const char *const place = static_cast<const char *>(caller);
    if (!dladdr(place - 1, &info) || !info.dli_fname)
        return line.Format("%p", caller);
    const char *slash = strrchr(info.dli_fname, '/');
    line.Add(slash ? slash + 1 : info.dli_fname);
    if (info.dli_sname)
        line.Format("(%s+0x%tx)", info.dli_sname, place - static_cast<char *>(info.dli_saddr));
    line.Format("[+0x%tx]", place - static_cast<char *>(info.dli_fbase));
}

void AddSite(Line &line, const char *label, const Site &site)
{
    if (site.call == kCallCount)
        return;
    Line place;
    AddPlace(place, site.caller);
    if (!gSettings.json) {
        line.Format("%s%s at ", label, kSignatures[site.call].name.data());
        return line.Add(place.text());
    }
    line.Format(",\"%s\":{\"name\":\"%s\",\"caller\":", label, kSignatures[site.call].name.data());
    line.Quote(place.text());
    line.Add("}");
}

void WriteText(Line &line, const Finding &finding)
{
    line.Format("wexelxi-trace: %s: ", finding.what);
    if (finding.kind)
        line.Format("%s 0x%llx, ", finding.kind, static_cast<unsigned long long>(finding.handle));
    AddSite(line, "", finding.at);
    AddSite(line, finding.at.call == kCallCount ? "made by " : "; made by ", finding.made);
    AddSite(line, "; ended by ", finding.ended);
    if (finding.times > 1)
        line.Format(" (%u of them)", finding.times);
}

void WriteJson(Line &line, const Finding &finding)
{
    line.Format("{\"finding\":\"%s\"", finding.what);
    if (finding.kind)
        line.Format(",\"kind\":\"%s\",\"handle\":\"0x%llx\"", finding.kind,
                    static_cast<unsigned long long>(finding.handle));
    AddSite(line, "at", finding.at);
    AddSite(line, "made", finding.made);
    AddSite(line, "ended", finding.ended);
    line.Format(",\"times\":%u}", finding.times);
}

// Lets the command know, which holds the file behind this name.
void Count()
{
    const int descriptor = open(gSettings.findings, O_WRONLY | O_APPEND | O_CLOEXEC);
    if (descriptor < 0)
        return;
    [[maybe_unused]] const ssize_t written = write(descriptor, "!", 1);
    close(descriptor);
}

} // namespace

void Report(const Finding &finding)
{
    Line line;
    if (gSettings.json)
        WriteJson(line, finding);
    else
        WriteText(line, finding);
    line.Add("\n");
    WriteLine(line.text());
    Count();
}

} // namespace trace
