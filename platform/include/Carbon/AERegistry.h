/// AERegistry.h: the four-character codes of the events that every application may be sent.
#pragma once

enum {
    kCoreEventClass = 0x61657674, ///< 'aevt'

    kAEOpenApplication   = 0x6F617070, ///< 'oapp'
    kAEReopenApplication = 0x72617070, ///< 'rapp'
    kAEOpenDocuments     = 0x6F646F63, ///< 'odoc': the direct object is a list of files
    kAEPrintDocuments    = 0x70646F63, ///< 'pdoc'
    kAEOpenContents      = 0x6F636F6E, ///< 'ocon'
    kAEQuitApplication   = 0x71756974, ///< 'quit'
    kAEAnswer            = 0x616E7372, ///< 'ansr': a reply
    kAEApplicationDied   = 0x6F626974, ///< 'obit'
    kAEShowPreferences   = 0x70726566, ///< 'pref'

    // for the system process
    kAERestart      = 0x72657374, ///< 'rest'
    kAEShutDown     = 0x73687574, ///< 'shut'
    kAELogOut       = 0x6C6F676F, ///< 'logo': after a question
    kAEReallyLogOut = 0x726C676F, ///< 'rlgo'
    kAESleep        = 0x736C6570  ///< 'slep'
};

enum {
    kAECoreSuite     = 0x636F7265, ///< 'core'
    kAEMiscStandards = 0x6D697363, ///< 'misc'
    kAEActivate      = 0x61637476, ///< 'actv'
    kAEClone         = 0x636C6F6E, ///< 'clon'
    kAEClose         = 0x636C6F73, ///< 'clos'
    kAECountElements = 0x636E7465, ///< 'cnte'
    kAECreateElement = 0x6372656C, ///< 'crel'
    kAEDelete        = 0x64656C6F, ///< 'delo'
    kAEDoObjectsExist = 0x646F6578, ///< 'doex'
    kAEDoScript      = 0x646F7363, ///< 'dosc'
    kAEGetData       = 0x67657464, ///< 'getd'
    kAEMove          = 0x6D6F7665, ///< 'move'
    kAESave          = 0x73617665, ///< 'save'
    kAESetData       = 0x73657464, ///< 'setd'
    keyAEData        = 0x64617461, ///< 'data'
    keyAEResult      = 0x2D2D2D2D  ///< '----'
};

// Object specifiers: a record of 'obj ' with these fields.
enum {
    keyAEDesiredClass = 0x77616E74, ///< 'want'
    keyAEContainer    = 0x66726F6D, ///< 'from'
    keyAEKeyForm      = 0x666F726D, ///< 'form'
    keyAEKeyData      = 0x73656C64, ///< 'seld'

    formAbsolutePosition = 0x696E6478, ///< 'indx'
    formName             = 0x6E616D65, ///< 'name'
    formPropertyID       = 0x70726F70, ///< 'prop'
    formUniqueID         = 0x49442020, ///< 'ID  '

    cApplication  = 0x63617070, ///< 'capp'
    cDocument     = 0x646F6375, ///< 'docu'
    cWindow       = 0x6377696E, ///< 'cwin'
    cProperty     = 0x70726F70, ///< 'prop'
    pName         = 0x706E616D, ///< 'pnam'
    pVersion      = 0x76657273, ///< 'vers'
    pIsFrontProcess = 0x70697366 ///< 'pisf'
};
