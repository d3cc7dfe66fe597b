/* What the plug-in report.dll offers, by name and number. */
#ifndef REPORT_H
#define REPORT_H

#define REPORT_TEMPLATE "note" /* FindResource name of the note's template */

/* LoadString numbers; the German text of each stands REPORT_GERMAN higher. */
enum {
    REPORT_TITLE = 1,
    REPORT_DATE,
    REPORT_QUANTITY,
    REPORT_ARTICLE,
    REPORT_AMOUNT,
    REPORT_TOTAL,
    REPORT_THANKS,
    REPORT_GERMAN = 100
};

#endif
