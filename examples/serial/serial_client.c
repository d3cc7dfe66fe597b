/* A serial client in the style that Win32 authors write: it asks a device at a port for its name.
 * With client_names.h it compiles as it stands; what a port here does otherwise is told where it
 * matters. */
#include <stdio.h>

#include "wexelxi/client_names.h"

#define ANSWER_WAIT 2000 /* milliseconds */
#define POLL_WAIT 10

static BOOL OpenPort(LPTSTR name, HANDLE *port)
{
    DCB dcb;

    *port = CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, NULL, OPEN_EXISTING,
                        FILE_ATTRIBUTE_NORMAL, NULL);
    if (*port == INVALID_HANDLE_VALUE)
        return FALSE;
    if (BuildCommDCBA(TEXT("baud=9600 parity=N data=8 stop=1"), &dcb) &&
        (dcb.BaudRate = CBR_115200, dcb.fDtrControl = DTR_CONTROL_DISABLE, /* three wires */
         SetCommState(*port, &dcb)) &&
        PurgeComm(*port, PURGE_RXCLEAR | PURGE_TXCLEAR) == 0) /* nothing to purge, and so 0 */
        return TRUE;
    CloseHandle(*port);
    return FALSE;
}

/* Reads up to the end of a line. A read gives what is waiting and does not wait itself. */
static DWORD ReadAnswer(HANDLE port, LPSTR answer, DWORD size)
{
    DWORD length = 0, got = 0;
    DWORD waited;

    for (waited = 0; waited < ANSWER_WAIT && length + 1 < size; waited += POLL_WAIT) {
        if (!ReadFile(port, answer + length, size - 1 - length, &got, NULL))
            break;
        length += got;
        if (length > 0 && answer[length - 1] == '\n')
            break;
        if (got == 0)
            Sleep(POLL_WAIT);
    }
    answer[length] = '\0';
    return length;
}

static int AskName(HANDLE port)
{
    CONST CHAR question[] = "*IDN?\r\n";
    CHAR answer[MAX_PATH];
    DWORD written = 0;

    if (!WriteFile(port, question, sizeof question - 1, &written, NULL) ||
        ReadAnswer(port, answer, sizeof answer) == 0)
        return 1;
    printf("%s", answer);
    return 0;
}

int main(int argc, char **argv)
{
    HANDLE port;
    int status = 1;

    if (argc != 2) { /* a writable name: the library upper-cases it in place */
        fprintf(stderr, "usage: serial_client PORT\n");
        return 2;
    }
    if (InitLib(argv[0], NULL, FALSE) != 0)
        return 1;
    if (OpenPort(argv[1], &port)) {
        status = AskName(port);
        CloseHandle(port);
    }
    if (status != 0)
        fprintf(stderr, "serial_client: no answer from %s, last error %u\n", argv[1],
                GetLastError());
    FreeLib();
    return status;
}
