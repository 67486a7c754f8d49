// Bodies as the library sends them.

const SERVICE = '/qrsk-med/3.0';
export const UUID = '7F3A9C52-04BE-4D17-9A6E-C0FFEE123456';
let requests = 0;

export function requestId() {
  requests += 1;
  return `00000000-0000-4000-8000-${String(requests).padStart(12, '0')}`;
}

export const SESSION = UUID + '-1700000000123';

export function common({user = 'noor', session = SESSION, id = requestId()} = {}) {
  return {keys: {user_id: encodeURIComponent(user), device_id: 'device-8a76', requestID: id, app_uuid: UUID, version: '4.2.0'},
          session: {idSession: session, timeSession: 1700000000123}, version: '4.2.0'};
}

const PERMISSIONS = {collectTime: 1, location: {latitude: 38.7223, longitude: -9.1393}, permissions: ['CAMERA'],
                     ignorePermissions: [], askedPermissions: []};

export function checkpoint(type, more = {}, identity = {}) {
  const body = common(identity);
  body.keys.checkpoint = type;
  return {...body, checkpoint_additional_data: PERMISSIONS, [type]: {checkpoint_type: type, ...more}};
}

export function user(id = 'noor') {
  return {user_id: id, email: `${id}@example.com`, isEmailVerified: 'VERIFIED', isPhoneUserVerified: 'UNKNOWN', isKYCVerified: 'UNKNOWN',
          phoneUser: '+15550100', user_address: {firstName: 'Noor', lastName: 'Haddad', city: 'Lisbon', country: 'PT'}};
}

export function transaction(amount = 12.5, identity = {}) {
  return checkpoint('TRANSACTION', {
    user: user(identity.user), payment: {creditCardDetail: {card_token: 'tok_4242', lastFourDigit: '4242'}}, billingAddress: {}, amount, timeStamp: 1700000001000,
    transactionType: 'P2P', curType: 'EUR', destinationId: 'bob', shippingAddress: {city: 'Porto', addressLine1: '12 Harbour Street'},
    authorizationResponse: {}, merchant_details: {merchant_name: 'Corner Shop', merchant_address: {}}}, identity);
}

export function outcome(id, status = 'APPROVED', identity = {}) {
  return {...common({...identity, id}), transactionUpdate: {requestID: id, transactionID: 'tx-1001', status}};
}

export function sessionData(identity = {}) {
  return {...common(identity), checkpoint_additional_data: PERMISSIONS, device_data: {collectTime: 1, screenWidth: 390, screenHeight: 844, deviceName: "Noor's phone"},
          sim_data: {collectTime: 1}, user_data: {}, settings_data: {collectTime: 1}};
}

export const PATHS = {
  device: SERVICE + '//GetDeviceID/', config: SERVICE + '/getSdkConfiguration/', session: SERVICE + '/SendSessionData/',
  risk: SERVICE + '/GetCheckpointRisk/', event: SERVICE + '/SendCheckpointEvent/', outcome: SERVICE + '//UpdateTransactionResult/',
  screen: SERVICE + '/sendScreenListenerEvent/', bio: SERVICE + '/BiometricData/', image: SERVICE + '/SendBiometricImage/',
  traces: SERVICE + '/TracingData/', enrich: SERVICE + '/ThirdPartyCacheEnrichment/',
};

// A biometric upload: two swipes; `columns` 12 is that of debug mode. `without` says what is wrong in it: 'times' leaves
// out the time rows of two touches outside every view, 'end' cancels the first press.
export function biometrics({columns = 9, without = [], identity = {}, start = 1700000002000} = {}) {
  const eventList = [];
  const eventListTS = [];
  const sensorsData = [];
  const sensorsTS = [];
  const press = (from, x, ends) => {
    for (let i = 0; i <= 24; i += 1) {
      const action = i === 0 ? 1 : i === 24 ? -1 : 0;
      if (action === -1 && !ends) break;
      eventList.push([x + 6 * Math.sin(i / 4), 700 - i * 22.5, 18 + 6 * Math.sin(i / 8), 0.2 + 0.6 * Math.sin(i / 8), action]);
      const isOutside = without.includes('times') && (i === 3 || i === 4);
      if (!isOutside) eventListTS.push([from + i * 16, i < 12 ? 59001 : 59000]);
      for (let k = 0; k < 2; k += 1) {
        const t = from + i * 16 + k * 8;
        const s = (t - start) / 100;
        const row = [0.02 * Math.sin(s), 0.98 + 0.05 * Math.cos(s), 0.1 * Math.sin(2 * s), 0.4 * Math.sin(s), 0.2 * Math.cos(s), 0.05 * s,
                     0.01, -0.97, -0.2, 22.5, -4.25, 40 + Math.sin(s)];
        sensorsData.push(row.slice(0, columns));
        sensorsTS.push([t]);
      }
    }
  };
  press(start, 180, !without.includes('end'));
  press(start + 1200, 260, true);
  const header = ['x', 'y', 'size', 'pressure', 'id'];
  return {...common(identity), userId: identity.user ?? 'noor', deviceId: 'device-8a76', uuid: UUID, bio_sensor_event_data: {
    fraudster: false, actionId: 1, actionType: 'LOGIN_FORM', eventListTS, eventList, eventListHeader: header, eventListTSHeader: header,
    sensorsTS, sensorHeader: ['lin_acc_x', 'lin_acc_y', 'lin_acc_z', 'gyr_unc_x', 'gyr_unc_y', 'gyr_unc_z', 'gra_x', 'gra_y', 'gra_z'],
    sensorTSHeader: ['nanoTimeSensor'], sensorsData}};
}

export function screenEvent(action, timestamp, identity = {}) {
  return {...common(identity), screenListenerEvent: {screenListenerType: 'LOGIN_FORM', screenId: 1, timestamp, action}};
}

// Trace entries of every kind around a time.
export function traces(url, start = Date.now(), identity = {}) {
  const at = (ms) => new Date(start + ms).toISOString();
  const entry = (ms, threadName, methodName, statusLoggingType, ...paramList) => ({date: at(ms), threadName, methodName, statusLoggingType, paramList});
  const main = 'thread 1872 "demo_host"';
  const net = 'thread 7008 "qv-net"';
  return {...common(identity), tracingData: [
    entry(0, main, 'getRiskForCheckPoint', 'Start', '{"checkpoint_type":"LOGIN","user":{"email":"noor@example.com"}}'),
    entry(1, main, 'configureUserId', 'Start', 'noor'),
    entry(1, main, 'configureUserId', 'End', 'noor'),
    entry(2, net, 'requestFromServer', 'Start', url.slice(0, -1) + PATHS.risk),
    entry(4, main, 'getRiskForCheckPoint', 'Middle', '{"checkpoint_type":"LOGIN","user":{"email":"noor@example.com"}}', 'sent'),
    entry(5, main, 'getRiskForCheckPoint', 'End', '{"checkpoint_type":"LOGIN","user":{"email":"noor@example.com"}}', 'sent'),
    entry(9, net, 'requestFromServer', 'End', url.slice(0, -1) + PATHS.risk),
    entry(10, main, 'logout()', 'Start'),
    entry(12, net, 'upload', 'Start', 'a'), entry(13, net, 'upload', 'Start', 'a'), entry(15, net, 'upload', 'End', 'a'), entry(16, net, 'upload', 'End', 'a'),
    entry(18, main, 'finish', 'End'),
    {error_stack: 'The parser failed', error_type: 'json', error_code: 101, error_timestamp: start + 14},
  ]};
}
