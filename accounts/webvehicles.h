// The vehicle pages of the web access, over accounts/vehicles.h, in the report centre's section:
// the vehicles ("vehiclelist"), a vehicle ("vehicleprop", new without id), its delete
// ("vehicledelete", refused while it has trips) and the delete of its trips over a period
// ("vehicledeleterecords"); the mileage log ("vehiclemileagelist", by vehicle and period), a trip
// ("vehiclemileageprop", new without id) and its delete ("vehiclemileagedelete"); the kilometric
// scales and the import of a new year's ("mileagescale", webmileagescale.cpp). The mileage report
// is the report centre's ("mileagereports").
#pragma once

// Every route above.
void LAccountsInstallVehiclePages();
// "mileagescale" alone.
void LAccountsInstallMileageScalePage();
