/* A plug-in: the texts and the template of a delivery note.
 *
 * A plug-in is an ordinary shared object. Both of its exports are optional: DllMain hears of the
 * first load and the last release, and WXresFunc serves its resources in whatever form it keeps
 * them. The library calls both with its lock held, so they may call the library on this thread. In
 * C++ both are extern "C". */
#include "report.h"

#include <string.h>

#include "wexelxi.h"

struct Text {
    uint32_t id;
    const char *text; /* UTF-8 */
};

static const struct Text texts[] = {
    {REPORT_TITLE, "Delivery note"},
    {REPORT_DATE, "Date"},
    {REPORT_QUANTITY, "Qty"},
    {REPORT_ARTICLE, "Article"},
    {REPORT_AMOUNT, "Amount"},
    {REPORT_TOTAL, "Total"},
    {REPORT_THANKS, "Thank you for your order."},
    {REPORT_GERMAN + REPORT_TITLE, "Lieferschein"},
    {REPORT_GERMAN + REPORT_DATE, "Datum"},
    {REPORT_GERMAN + REPORT_QUANTITY, "Menge"},
    {REPORT_GERMAN + REPORT_ARTICLE, "Artikel"},
    {REPORT_GERMAN + REPORT_AMOUNT, "Betrag"},
    {REPORT_GERMAN + REPORT_TOTAL, "Summe"},
    {REPORT_GERMAN + REPORT_THANKS, "Vielen Dank f\xC3\xBCr Ihren Auftrag."},
};

static const char noteTemplate[] = "@title@ @number@\n"
                                   "\n"
                                   "@name@\n"
                                   "@street@\n"
                                   "@city@\n"
                                   "\n"
                                   "@date@\n"
                                   "\n"
                                   "@items@\n"
                                   "\n"
                                   "@thanks@\n";

/* Copies the text with the id, cut to fit, and gives the length copied; 0 if there is none. */
static intptr_t CopyText(uint32_t id, char *destination, uint32_t size)
{
    size_t i, length;

    for (i = 0; i < sizeof texts / sizeof texts[0]; i++) {
        if (texts[i].id != id || size == 0)
            continue;
        length = strlen(texts[i].text);
        if (length > size - 1)
            length = size - 1;
        memcpy(destination, texts[i].text, length);
        destination[length] = '\0';
        return (intptr_t)length;
    }
    return 0;
}

WEXELXI_API intptr_t WXresFunc(uint32_t opcode, intptr_t first, intptr_t second, intptr_t third)
{
    switch (opcode) {
    case WXRES_FIND: /* name and type are as the caller gave them: here a name, and no type */
        return strcmp((const char *)first, REPORT_TEMPLATE) == 0 ? 1 : 0;
    case WXRES_LOAD: /* nothing has to be read from anywhere: the id serves as the load value */
        return first;
    case WXRES_LOCK:
        return second == 1 ? (intptr_t)noteTemplate : 0;
    case WXRES_SIZE:
        return second == 1 ? (intptr_t)sizeof noteTemplate - 1 : 0;
    case WXRES_LOADSTRING:
        return CopyText((uint32_t)first, (char *)second, (uint32_t)third);
    default: /* attach, detach, free and unlock need nothing */
        return 0;
    }
}

WEXELXI_API BOOL DllMain(HMODULE module, uint32_t reason, intptr_t scale)
{
    (void)module;
    (void)reason; /* DLL_PROCESS_ATTACH at the first load, DLL_PROCESS_DETACH at the last release */
    (void)scale;
    return TRUE;
}
