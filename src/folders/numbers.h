#pragma once

namespace folders {

// The numbers of folders and columns. Settings, saved layouts, the command line and the documents use them, so they
// never change; a folder is found by its number in folders/catalogue.

enum FolderNumber : int {
  FolderUsers = 97,
  FolderGroups = 98,
  FolderLog = 99,
  FolderCalls = 100,
  FolderExtensions = 101,
  FolderTop = 102,  // the numbers called
  FolderAreas = 103,
  FolderTrunks = 104,
  // 105 is left unused.
  FolderDepartments = 106,
  FolderClients = 107,
  FolderFiles = 108,  // the office's own files, column Folder of Calls
  FolderAccounts = 109,
  FolderNames = 110,
  FolderCountries = 111,
  FolderProviders = 112,
  FolderWeekdays = 113,
  FolderDays = 114,  // of the month
  FolderMonths = 115,
  FolderHours = 116,
  FolderContacts = 200,  // the contacts list, which is none of the standard folders
};

// A column's kind is its identifier within a folder and decides how its values are shown.
enum ColumnKind : int {
  KindKey = 1,

  KindContactName = 200,
  KindContactPerson = 201,
  KindOrganization = 202,
  KindRelationship = 203,
  KindEmail = 205,
  KindWeb = 206,
  KindAddress = 207,
  KindNote = 208,
  KindTelephones = 210,

  KindUserAccount = 350,
  KindUserName = 351,
  KindLastAccess = 352,
  KindPasswordDate = 353,
  KindUserFlags = 354,
  KindGroupName = 370,
  KindGroupDescription = 371,
  KindLogUser = 380,
  KindLogText = 381,
  KindLogTime = 382,

  KindNumber = 400,  // an area too, in the statistic of areas
  KindTime = 401,
  KindExtension = 402,
  KindTrunk = 403,
  KindDuration = 404,
  KindAccount = 405,
  KindName = 407,
  KindCostReference = 408,  // in the reference currency
  KindRedirected = 409,
  KindArea = 411,
  KindCost = 412,  // amount and currency
  KindDepartment = 413,
  KindCode = 414,
  KindDirection = 415,
  KindRing = 416,
  KindPriceSum = 417,
  KindClient = 418,  // a name too, in the statistic of names
  KindFile = 419,
  KindPrice = 420,
  KindCount = 421,
  KindCostSum = 422,
  KindCostAverage = 423,
  KindRingAverage = 424,
  KindPriceAverage = 425,
  KindProvider = 426,  // a country too, in the statistic of countries
  KindCountry = 427,
  KindPulses = 428,
  KindWeekday = 429,
  KindDay = 430,  // of the month
  KindHour = 431,
  KindMonth = 432,
};

}  // namespace folders
